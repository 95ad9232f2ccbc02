// A class that has everything the framework offers and the effect does not use; what reaches it
// goes to the error channel, one line each, so that a test sees it.
#include <atomic>
#include <chrono>
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

template <class T, int Threadsafety = 0>
using kept = attribute<T, Threadsafety, limit::none, 2>;
using numbers = std::vector<double>;

// The constants of a class count where a wrapper is in between, too.
template <class Described>
class wrapper : public object<wrapper<Described>, 1>, public vector_operator<0> {
public:
    using described_class = Described;
};

class example : public wrapper<example> {
public:
    static constexpr const char* class_flags = " multitouch ";

    message<0> dspsetup{
        this, "dspsetup", [this](const atoms& values, int) {
            log("dspsetup",
                {values[0], values[1], left.has_signal_connection, right.has_signal_connection,
                 sum_out.has_signal_connection, count_out.has_signal_connection});
            // Lets a test act in the middle of the set-up.
            while (values[1].as_long() == 13 && gain.stored() != 13.0) std::this_thread::yield();
            return values;
        }};
    message<2> class_setup{
        this, "teskclass_setup", [this](const atoms& values, int) {
            auto* const made = static_cast<tesk_class*>(values[0].as_object());
            matrix.create(made, attribute_getter_callback, attribute_setter_callback, true);
            matrix_list.create(made, attribute_getter_callback, attribute_setter_callback, true);
            return atoms{};
        }};
    message<0> later{this, "later", logged("later")};
    message<0> later_at{this, "later_at",
                        [this](const atoms&, int inlet) { return log("later_at", {inlet}); }};
    message<2> here{this, "here", [this](const atoms& values, int inlet) {
                        return log("here", {values.at(0), atom(inlet)});
                    }};
    message<2> sum{this, "sum",
                   [](const atoms& values, int) -> atoms {
                       return {atom(values.at(0).as_long() + values.at(1).as_long())};
                   },
                   "", type_any_result};
    message<2> words{this, "words", logged("words"), "", kind_plain_strings};
    message<2> integer{this, "integer", logged("int")};
    message<2> notify{this, "notify", logged("notify", {7})};
    message<2> key{this, "key", logged("key", {})};
    message<2> getplaystate{this, "getplaystate", logged("", {1, 0.5, 2})};
    message<2> oksize{this, "oksize", [](const atoms& values, int) { return values; }};
    std::vector<std::unique_ptr<message<2>>> others;

    kept<numbers> value{this, "value", {1.0, 2.0}};
    kept<double, 2> gain{this, "gain", 0.5, {0.0, 1.5}, "Gain", "", logged("gain"), "Levels"};
    kept<bool> locked{this, "locked", true, "Locked"};
    kept<double> secret{this, "secret", 0.0, {1.0, 2.0, 3.0}, "Secret"};
    kept<numbers> tint{this, "tint", {0.0}, "Tint"};
    kept<shape_kind> shape{this, "shape", shape_kind::round, {"round", "square", "quite flat"}};
    kept<shape_kind> set_shape{this, "set_shape", shape_kind::flat,   {"a", "b", "c"}, "",
                               "",   {},          logged("set_shape")};
    kept<shape_kind> word{this, "word", shape_kind::round, {"a", "b", "c"}};
    kept<double> steps{this, "steps", 0.0, {}, "", "", logged("steps")};
    kept<double, 2> fontname{this, "fontname", 1.0, {}, "", "", {}, {}, [] { return atoms{9.0}; }};
    kept<double> matrix{this, "matrix", 0.0, {}};
    kept<numbers> matrix_list{this, "matrix_list", {}};

    argument_base first;
    argument_base second;
    inlet<0> left{this, "left in", "signal"};
    inlet<0> right{this, "right in", "signal"};
    outlet<3, 0> sum_out{this, "sum out", "signal"};
    outlet<3, 0> count_out{this, "count out"};

    example() {
        if (sys_getsr() == 11025.0) throw std::runtime_error("constructor: no");
        for (const char* name :
             {"setup", "bang", "dblclick", "edclose", "okclose", "loadbang", "anything",
              "dictionary", "dspstate", "paint", "focusgained", "focuslost", "patchlineupdate",
              "fileusage", "savestate", "number"})
            add(name, logged(name));
        for (const char* name :
             {"mouseenter", "mouseleave", "mousedown", "mouseup", "mousemove", "mousedrag"})
            add(name, [this, name](const atoms& values, int) {
                const tesk_touch& touch = static_cast<touch_event*>(values[0].as_object())->touch;
                return log(name, {touch.index, touch.point.x});
            });
        for (const char* name : {"mousedragdelta", "mousedoubleclick", "mousewheel"})
            add(name, [this, name](const atoms& values, int) {
                const auto& event = *static_cast<mouse_event*>(values[0].as_object());
                atoms seen{event.x,    event.y,      event.modifiers, event.rectangle.width,
                           event.type, event.pointer};
                seen.insert(seen.end(), values.begin() + 1, values.end());
                return log(name, seen);
            });
        skip_reference_page = 1;
        locked.readonly = true;
        secret.visibility = attribute_visibility::hidden;
        tint.color = "lcd_bg";
        tint.order = 4;
        word.datatype = "symbol";
        word.style = style_none;
        matrix.visibility = attribute_visibility::disabled;
        matrix_list.visibility = attribute_visibility::disabled;
        matrix_list.readonly = true;
        first.function = [this](const atom& given) { log("first", {given}); };
        arguments = {&first, &second};
    }

    // Long enough for a vector to begin, if the host were still to ask for one.
    ~example() override {
        ending_ = true;
        if (calls_ > 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }

    // The sum of both inputs; and how often it was called.
    void operator()(signal_bundle in, signal_bundle out) override {
        if (ending_) object_error(nullptr, "a vector of an object that is being destroyed");
        ++calls_;
        for (std::int32_t i = 0; i < in.frame_count; ++i) {
            out.channels[0][i] = in.channels[0][i] + in.channels[1][i];
            out.channels[1][i] = calls_;
        }
    }

private:
    double calls_ = 0;
    std::atomic<bool> ending_{false};

    atoms log(const std::string& name, const atoms& values) {
        const std::string line = name + " " + to_text(values);
        if (line.ends_with(" refuse")) throw std::runtime_error(name + ": no");
        if (valid_host_object() != nullptr) object_error(valid_host_object(), "%s", line.c_str());
        return values;
    }
    message_function logged(const std::string& name) {
        return [this, name](const atoms& values, int) { return log(name, values); };
    }
    message_function logged(const std::string& name, const atoms& answer) {
        return [=, this](const atoms& values, int) { return log(name, values), answer; };
    }
    void add(const char* name, const message_function& function) {
        others.push_back(std::make_unique<message<2>>(this, name, function));
    }
};

extern "C" KV7_EXPORT void ext_main(void*) {
    register_class<example>(__FILE__);
}
