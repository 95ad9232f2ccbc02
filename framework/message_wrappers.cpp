#include "framework/message_wrappers.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "framework/class_registration.h"
#include "framework/guarded.h"
#include "framework/host_answer.h"

namespace kv7::ply {

namespace {

// A message's name as a template argument, so that each callback knows which one it is.
template <std::size_t N>
struct text {
    char characters[N];
    constexpr text(const char (&literal)[N]) {  // NOLINT: literals stand for themselves
        std::copy_n(literal, N, characters);
    }
};

atoms call(void* self, const char* name, const atoms& values) {
    message_base* const message = object_of(self).messages.find(name);
    return message != nullptr ? message->call(values, -1) : atoms{};
}

atom as_atom(std::int64_t value) {
    return value;
}
atom as_atom(double value) {
    return value;
}
atom as_atom(tesk_symbol* value) {
    return symbol(value);
}
atom as_atom(void* value) {
    return atom(value);
}

// The host's arguments become one atom each.
template <text Name, class... Arguments>
void plain(void* self, Arguments... values) {
    guarded([&] { call(self, Name.characters, {as_atom(values)...}); });
}

// The same with the object itself in front.
template <text Name, class... Arguments>
void with_self(void* self, Arguments... values) {
    guarded([&] { call(self, Name.characters, {atom(self), as_atom(values)...}); });
}

template <text Name, class... Arguments>
std::int64_t with_self_to_long(void* self, Arguments... values) {
    return guarded(std::int64_t{0}, [&] {
        const atoms result = call(self, Name.characters, {atom(self), as_atom(values)...});
        return result.empty() ? 0 : result.front().as_long();
    });
}

void* oksize(void* self, void* rectangle) {
    return guarded(static_cast<void*>(nullptr), [=]() -> void* {
        const atoms result = call(self, "oksize", {atom(rectangle)});
        return result.empty() ? nullptr : result.front().as_object();
    });
}

void anything(void* self, tesk_symbol* selector, std::int64_t count, tesk_atom* values) {
    guarded([=] {
        atoms given = atoms_from(count, values);
        given.insert(given.begin(), atom(symbol(selector)));
        call(self, "anything", given);
    });
}

struct retained_dictionary {
    explicit retained_dictionary(tesk_symbol* name) : object(dictobj_findregistered_retain(name)) {}
    ~retained_dictionary() {
        if (object != nullptr) dictobj_release(object);
    }
    retained_dictionary(const retained_dictionary&) = delete;
    retained_dictionary& operator=(const retained_dictionary&) = delete;
    void* object;
};

void dictionary(void* self, tesk_symbol* name) {
    guarded([=] {
        const retained_dictionary found(name);
        call(self, "dictionary", {atom(found.object)});
    });
}

void getplaystate(void* self, std::int64_t* playing, double* position, std::int64_t* looping) {
    guarded([=] {
        const atoms state = call(self, "getplaystate", {});
        if (state.size() > 0) *playing = state[0].as_long();
        if (state.size() > 1) *position = state[1].as_float();
        if (state.size() > 2) *looping = state[2].as_long();
    });
}

// Integers of a class that has "float" alone.
void int_through_float(void* self, std::int64_t value) {
    guarded([=] { call(self, "float", {atom(value)}); });
}

template <text Name, class... Further>
void mouse(void* self, void* view, tesk_point at, std::int64_t modifiers, Further... further) {
    guarded([&] {
        mouse_event event{.object = self,
                          .box = self,
                          .view = view,
                          .graphics = patcherview_get_jgraphics(view),
                          .rectangle = {},
                          .x = at.x,
                          .y = at.y,
                          .modifiers = static_cast<std::uint32_t>(modifiers)};
        jbox_get_rect_for_view(self, view, &event.rectangle);
        call(self, Name.characters, {atom(static_cast<void*>(&event)), as_atom(further)...});
    });
}

template <text Name>
void touch(void* self, void* view, const tesk_touch* finger) {
    guarded([&] {
        touch_event event{self, self, view, patcherview_get_jgraphics(view), {}, *finger};
        jbox_get_rect_for_view(self, view, &event.rectangle);
        call(self, Name.characters, {atom(static_cast<void*>(&event))});
    });
}

// The name of the message comes first, for one callback serves every message of this kind.
void plain_strings(void* self, tesk_symbol* selector, ...) {
    std::va_list strings;
    va_start(strings, selector);
    guarded([&] {
        atoms given;
        for (const char* s; (s = va_arg(strings, const char*)) != nullptr;)
            given.emplace_back(symbol(s));
        call(self, symbol(selector).c_str(), given);
    });
    va_end(strings);
}

void any_result(void* self, tesk_symbol* selector, std::int64_t count, tesk_atom* values,
                tesk_atom* result) {
    guarded([=] {
        const atoms answer = call(self, symbol(selector).c_str(), atoms_from(count, values));
        if (!answer.empty()) *result = answer.front();
    });
}

void any(void* self, tesk_symbol* selector, std::int64_t count, tesk_atom* values) {
    guarded([=] { call(self, symbol(selector).c_str(), atoms_from(count, values)); });
}

// One message whose argument list at the host is its own.
struct row {
    std::string_view name;
    std::int32_t type;
    tesk_method method;
    const char* host_name;  // null: the same
};

template <class Function>
row row_of(std::string_view name, std::int32_t type, Function* method,
           const char* host_name = nullptr) {
    return {name, type, reinterpret_cast<tesk_method>(method), host_name};
}

using integer = std::int64_t;
using object_pointer = void*;

const row* row_named(std::string_view name) {
    using wheel = void(void*, void*, tesk_point, integer, double, double);
    static const row rows[]{
        row_of("bang", type_none, plain<"bang">),
        row_of("dblclick", type_private, plain<"dblclick">),
        row_of("edclose", type_private, plain<"edclose">),
        row_of("okclose", type_private, plain<"okclose">),
        row_of("loadbang", type_private, plain<"loadbang">),
        row_of("int", type_long, plain<"int", integer>),
        row_of("float", type_float, plain<"float", double>),
        row_of("anything", type_any, anything),
        row_of("dictionary", type_symbol, dictionary),
        row_of("dspstate", type_private, plain<"dspstate", integer>),
        row_of("getplaystate", type_private, getplaystate),
        row_of("notify", type_private,
               with_self_to_long<"notify", tesk_symbol*, tesk_symbol*, object_pointer,
                                 object_pointer>),
        row_of("oksize", type_private, oksize),
        row_of("paint", type_private, with_self<"paint", object_pointer>),
        row_of("focusgained", type_private, with_self<"focusgained", object_pointer>),
        row_of("focuslost", type_private, with_self<"focuslost", object_pointer>),
        row_of("key", type_private,
               with_self_to_long<"key", object_pointer, integer, integer, integer>),
        row_of("patchlineupdate", type_private,
               with_self<"patchlineupdate", object_pointer, integer, object_pointer, integer,
                         object_pointer, integer>),
        row_of("fileusage", type_private, plain<"fileusage", object_pointer>),
        row_of("savestate", type_private, plain<"savestate", object_pointer>, "appendtodictionary"),
        row_of("mouseenter", type_private, mouse<"mouseenter">),
        row_of("mouseleave", type_private, mouse<"mouseleave">),
        row_of("mousedown", type_private, mouse<"mousedown">),
        row_of("mouseup", type_private, mouse<"mouseup">),
        row_of("mousemove", type_private, mouse<"mousemove">),
        row_of("mousedrag", type_private, mouse<"mousedrag">),
        row_of("mousedragdelta", type_private, mouse<"mousedragdelta">),
        row_of("mousedoubleclick", type_private, mouse<"mousedoubleclick">),
        row_of("mousewheel", type_private, static_cast<wheel*>(mouse<"mousewheel">)),
        row_of("mt_mouseenter", type_private, touch<"mt_mouseenter">),
        row_of("mt_mouseleave", type_private, touch<"mt_mouseleave">),
        row_of("mt_mousedown", type_private, touch<"mt_mousedown">),
        row_of("mt_mouseup", type_private, touch<"mt_mouseup">),
        row_of("mt_mousemove", type_private, touch<"mt_mousemove">),
        row_of("mt_mousedrag", type_private, touch<"mt_mousedrag">),
    };
    const auto* const found = std::find_if(std::begin(rows), std::end(rows),
                                           [name](const row& r) { return r.name == name; });
    return found == std::end(rows) ? nullptr : found;
}

}  // namespace

void register_message(tesk_class* of_class, const message_base& message,
                      const object_base& prototype) {
    const char* const name = message.name.c_str();
    const std::string_view named = name;
    if (named == "dspsetup" || named == "teskclass_setup") return;
    if (const row* const own = row_named(named))
        add_method(of_class, own->method, own->host_name != nullptr ? own->host_name : name,
                   own->type);
    else if (message.kind == kind_plain_strings)
        add_method(of_class, plain_strings, name, type_private);
    else if (message.kind == type_any_result)
        add_method(of_class, any_result, name, type_any_result);
    else
        add_method(of_class, any, name, message.kind);
    if (named == "float" && prototype.messages.find("int") == nullptr)
        add_method(of_class, int_through_float, "int", type_long);
}

}  // namespace kv7::ply
