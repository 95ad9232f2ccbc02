// A class that has everything the framework offers and the effect does not use; what reaches it
// goes to the error channel, one line each, so that a test sees it.
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "framework/attributes.h"
#include "framework/class_registration.h"
#include "framework/message_wrappers.h"
#include "framework/messages.h"
#include "framework/ports.h"

using namespace kv7::ply;

enum class shape_kind : std::int32_t { round, square, flat };

template <>
struct kv7::ply::enum_count<shape_kind> {
    static constexpr int value = 3;
};

class example : public object<example, 1>, public vector_operator<0> {
public:
    static constexpr const char* class_flags = " multitouch ";

    // A message of each kind, in this order.
    message<0> dspsetup{this, "dspsetup", [this](const atoms& values, int) {
                            log("dspsetup", values);
                            // Lets a test act in the middle of the set-up.
                            while (values[1].as_long() == 13 && gain.stored() != 13.0)
                                std::this_thread::yield();
                            return values;
                        }};
    message<2> setup{this, "setup", [this](const atoms& values, int) {
                         if (to_text(values) == "refuse") throw std::runtime_error("set up: no");
                         return log("setup", values);
                     }};
    message<2> class_setup{
        this, "teskclass_setup", [this](const atoms& values, int) {
            auto* const made = static_cast<tesk_class*>(values[0].as_object());
            matrix.create(made, attribute_getter_callback, attribute_setter_callback, true);
            matrix_list.create(made, attribute_getter_callback, attribute_setter_callback, true);
            return atoms{};
        }};
    message<0> later{this, "later", logged("later"), ""};
    message<2> here{
        this, "here", [this](const atoms& values, int inlet) {
            return log("here", {atom(values.empty() ? 0 : values[0].as_long()), atom(inlet)});
        }};
    message<2> fails{this, "fails", [](const atoms&, int) -> atoms {
                         throw std::runtime_error("message failed");
                     }};
    message<2> sum{this, "sum",
                   [](const atoms& values, int) -> atoms {
                       return {atom(values.at(0).as_long() + values.at(1).as_long())};
                   },
                   "", type_any_result};
    message<2> words{this, "words", logged("words"), "", kind_plain_strings};
    message<2> integer{this, "integer", logged("int")};
    message<2> notify{this, "notify", answering("notify", {atom(7)})};
    message<2> key{this, "key", answering("key", {})};
    message<2> getplaystate{this, "getplaystate", answering("getplaystate", {1, 0.5, 2})};
    message<2> oksize{this, "oksize", [](const atoms& values, int) { return values; }};
    std::vector<std::unique_ptr<message<2>>> plain;

    attribute<std::vector<double>, 0, limit::none, 2> value{this, "value", {1.0, 2.0}};
    attribute<double, 2, limit::none, 2> gain{
        this,
        "gain",
        0.5,
        {0.0, 1.5},
        "Gain",
        "",
        [this](const atoms& values, int) { return log("gain", values); },
        "Levels"};
    attribute<double, 0, limit::none, 2> Upper{this, "Upper", 3.0, {1.0, 2.0, 3.0}};
    attribute<bool, 0, limit::none, 2> locked{this, "locked", true, "Locked"};
    attribute<double, 0, limit::none, 2> secret{this, "secret", 0.0, {}, "Secret"};
    attribute<bool, 0, limit::none, 2> gone{this, "gone", false, "Gone"};
    attribute<std::vector<double>, 0, limit::none, 2> tint{this, "tint", {0.0}, "Tint"};
    attribute<shape_kind, 0, limit::none, 2> shape{
        this, "shape", shape_kind::round, {"round", "square", "quite flat"}, "Shape"};
    attribute<shape_kind, 0, limit::none, 2> set_shape{
        this,
        "set_shape",
        shape_kind::flat,
        {"round", "square", "quite flat"},
        "",
        "",
        {},
        [](const atoms& values, int) { return values; }};
    attribute<shape_kind, 0, limit::none, 2> word{
        this, "word", shape_kind::round, {"a", "b", "c"}, "Word"};
    attribute<double, 0, limit::none, 2> steps{
        this, "steps", 0.0, {}, "Steps", "", [this](const atoms& values, int) {
            return log("steps", values);
        }};
    attribute<double, 2, limit::none, 2> fontname{
        this, "fontname", 1.0, {}, "Font", "", {}, {}, [] { return atoms{atom(9.0)}; }};
    attribute<double, 0, limit::none, 2> matrix{this, "matrix", 0.0, {}};
    attribute<std::vector<double>, 0, limit::none, 2> matrix_list{this, "matrix_list", {}};

    argument_base first;
    argument_base second;
    inlet<0> left{this, "left in", "signal"};
    inlet<0> right{this, "right in", "signal"};
    outlet<3, 0> sum_out{this, "sum out", "signal"};
    outlet<3, 0> count_out{this, "count out"};

    example();
    // The sum of both inputs; and how often it was called.
    void operator()(signal_bundle in, signal_bundle out) override;

private:
    double calls_ = 0;

    atoms log(const std::string& name, const atoms& values) {
        if (valid_host_object() != nullptr)
            object_error(valid_host_object(), "%s", (name + " " + to_text(values)).c_str());
        return values;
    }
    message_function logged(const std::string& name) {
        return [this, name](const atoms& values, int) { return log(name, values); };
    }
    message_function answering(const std::string& name, const atoms& answer) {
        return [this, name, answer](const atoms& values, int) {
            log(name, values);
            return answer;
        };
    }
    atoms log_mouse(const atoms& values, const std::string& name);
};

atoms example::log_mouse(const atoms& values, const std::string& name) {
    atoms seen(values.begin() + 1, values.end());
    if (name.rfind("mt_", 0) == 0) {
        const auto* const event = static_cast<touch_event*>(values[0].as_object());
        seen.insert(seen.begin(), {atom(event->touch.index), atom(event->touch.point.x)});
    } else {
        const auto* const event = static_cast<mouse_event*>(values[0].as_object());
        seen.insert(seen.begin(),
                    {atom(event->x), atom(event->y), atom(event->modifiers),
                     atom(event->rectangle.width), atom(event->type), atom(event->pointer)});
    }
    return log(name, seen);
}

example::example() {
    if (sys_getsr() == 11025.0) throw std::runtime_error("constructor: no");
    for (const char* name : {"bang", "dblclick", "edclose", "okclose", "loadbang", "anything",
                             "dictionary", "dspstate", "paint", "focusgained", "focuslost",
                             "patchlineupdate", "fileusage", "savestate", "number"})
        plain.push_back(std::make_unique<message<2>>(this, name, logged(name)));
    for (const char* name :
         {"mouseenter", "mouseleave", "mousedown", "mouseup", "mousemove", "mousedrag"}) {
        const std::string touch = std::string("mt_") + name;
        plain.push_back(std::make_unique<message<2>>(
            this, name, [this, touch](const atoms& v, int) { return log_mouse(v, touch); }));
    }
    for (const char* name : {"mousedragdelta", "mousedoubleclick", "mousewheel"}) {
        const std::string mouse = name;
        plain.push_back(std::make_unique<message<2>>(
            this, name, [this, mouse](const atoms& v, int) { return log_mouse(v, mouse); }));
    }
    skip_reference_page = 1;
    locked.readonly = true;
    secret.visibility = attribute_visibility::hidden;
    gone.visibility = attribute_visibility::disabled;
    tint.color = "lcd_bg";
    tint.order = 4;
    word.datatype = "symbol";
    word.style = style_none;
    matrix.visibility = attribute_visibility::disabled;
    matrix_list.visibility = attribute_visibility::disabled;
    matrix_list.readonly = true;
    first.function = [this](const atom& given) {
        if (given.is_symbol() && given.as_symbol() == "throw")
            throw std::runtime_error("argument: no");
        log("first", {given});
    };
    arguments = {&first, &second};
}

void example::operator()(signal_bundle in, signal_bundle out) {
    ++calls_;
    for (std::int32_t i = 0; i < in.frame_count; ++i) {
        out.channels[0][i] = in.channels[0][i] + in.channels[1][i];
        out.channels[1][i] = calls_;
    }
}

extern "C" KV7_EXPORT void ext_main(void*) {
    register_class<example>(__FILE__);
}
