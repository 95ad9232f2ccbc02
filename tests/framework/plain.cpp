// A small class of a library that documents itself: "float" without "int", the mouse without
// fingers.
#include <string>

#include "framework/attributes.h"
#include "framework/class_registration.h"
#include "framework/messages.h"
#include "framework/ports.h"

using namespace kv7::ply;

struct number_argument : argument_base {
    std::string type_name() const override { return "float"; }
};

class plain : public object<plain, 1>, public vector_operator<0> {
public:
    static constexpr const char* class_description =
        "Sets @gain by #go at once. Meets [other~] & ends.";
    static constexpr const char* class_author = "Its author";
    static constexpr const char* class_tags = "first, second";
    static constexpr const char* class_see_also = " other~,third ";

    message<2> number{this, "number",
                      [this](const atoms& values, int inlet) {
                          const std::string text = to_text(values);
                          object_error(valid_host_object(), "float %s at %d", text.c_str(), inlet);
                          return values;
                      },
                      "Takes  a&b numbers from 0.5 on. Fast."};
    message<2> mousedown{this, "mousedown", [](const atoms& values, int) { return values; }};
    message<2> notify{this, "notify", [](const atoms& values, int) { return values; }};
    inlet<0> in{this, "in", "signal"};
    attribute<double, 2, limit::none, 2> gain{this, "gain", 0.5, {}, "", "No point [here"};
    attribute<bool, 0, limit::none, 2> Flag{this, "Flag", false, "", " Ends here. "};
    attribute<double, 2, limit::none, 2> secret{this, "secret", 0.5, {}};
    number_argument first;
    argument_base second;

    plain() {
        library_class = 1;
        gain.readonly = true;
        secret.visibility = attribute_visibility::hidden;
        Flag.visibility = attribute_visibility::disabled;
        first.name = "start";
        first.description = "Where it starts.";
        first.required = true;
        second.name = "end";
        arguments = {&first, &second};
    }
    void operator()(signal_bundle, signal_bundle) override {}
};

extern "C" KV7_EXPORT void ext_main(void*) {
    register_class<plain>(__FILE__);
}
