#include "framework/attribute_registration.h"

#include <cstddef>
#include <ios>
#include <locale>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "framework/guarded.h"
#include "framework/host_answer.h"
#include "framework/symbol_table.h"
#include "framework/text.h"

namespace kv7::ply {

namespace {

// The host's words for the bounds of a number.
constexpr const char* lower_bound_key = "minimum";
constexpr const char* upper_bound_key = "maximum";

const std::unordered_map<int, const char*> style_names{{1, "text"},      {2, "onoff"}, {3, "enum"},
                                                       {4, "enumindex"}, {5, "rect"},  {6, "font"},
                                                       {7, "file"},      {9, "rgba"}};

// Adds properties to one attribute of one class.
struct property_writer {
    tesk_class* of_class;
    const attribute_base& attribute;
    refused_properties& refused;

    void parse(const char* key, const symbol& type, const std::string& text) const {
        note(class_attr_addattr_parse(of_class, attribute.name.c_str(), key, type.interned(), 0,
                                      text.c_str()),
             key);
    }
    void value(const char* key, const symbol& type, atom one) const {
        note(class_attr_addattr_atoms(of_class, attribute.name.c_str(), key, type.interned(), 0, 1,
                                      &one),
             key);
    }
    void label() const {
        tesk_symbol* const translated = gensym_tr(attribute.title.c_str());
        note(class_attr_addattr_format(
                 of_class, attribute.name.c_str(), "label", symbols::symbol_type.interned(), 0, "s",
                 translated != nullptr ? translated : attribute.title.interned()),
             "label");
    }
    // The type that the host gave the attribute.
    symbol own_type() const {
        void* const at_host =
            require_pointer(class_attr_get(of_class, attribute.name.interned()), "class_attr_get",
                            "attribute " + attribute.name.text());
        auto* const type =
            static_cast<tesk_symbol*>(object_method_imp(at_host, symbols::gettype.interned()));
        return type != nullptr ? symbol(type) : attribute.datatype;
    }
    void note(std::int64_t error, const char* key) const {
        if (error != 0 && refused.count++ == 0) refused.first = attribute.name.text() + " " + key;
    }
};

void write_default(const property_writer& write) {
    const attribute_base& attribute = write.attribute;
    if (attribute.color.empty()) {
        const std::string text = attribute.default_string();  // first: one order of host calls
        write.parse("default", write.own_type(), text);
        return;
    }
    tesk_color rgba{};
    write.note(object_parameter_color_get(nullptr, attribute.color.interned(), &rgba), "color");
    std::ostringstream text = classic_text();
    text << std::fixed << rgba.red << ' ' << rgba.green << ' ' << rgba.blue << ' ' << rgba.alpha;
    write.parse("defaultname", symbols::symbol_type, text.str());
    write.note(class_parameter_register_default_color(write.of_class, attribute.name.interned(),
                                                      attribute.color.interned()),
               "default color");
}

int quoted_items(const std::string& text) {
    int items = 0;
    bool inside = false;
    for (const char c : text)
        if (c == '"') {
            inside = !inside;
            if (inside) ++items;
        }
    return items;
}

void write_bounds(const property_writer& write, const std::string& low, const std::string& high) {
    const symbol type = write.own_type();
    write.parse(lower_bound_key, type, low);
    write.parse(upper_bound_key, type, high);
}

void write_range(const property_writer& write) {
    const attribute_base& attribute = write.attribute;
    const std::string range = attribute.range_string();
    if (range.empty()) return;
    const symbol& type = attribute.datatype;
    if (type == symbols::symbol_type) {
        write.parse("style", symbols::symbol_type, "enum");
        write.parse("enumvals", "atom", range);
    } else if (type == symbols::long_integer && attribute.style == style_enumindex) {
        write.parse("style", symbols::symbol_type, "enumindex");
        write.parse("enumvals", "atom", range);
        if (const int n = quoted_items(range); n > 0)
            write_bounds(write, "0", std::to_string(n - 1));
    } else if (type == symbols::float64 || type == symbols::long_integer) {
        std::istringstream words(range);
        words.imbue(std::locale::classic());
        std::vector<std::string> tokens;
        for (std::string token; words >> token;) tokens.push_back(token);
        if (tokens.size() == 2) write_bounds(write, tokens[0], tokens[1]);
    }
}

std::int64_t getvalueof_callback(void* instance, std::int64_t* count, tesk_atom** values) {
    return object_attr_getvalueof(instance, symbols::value.interned(), count, values);
}

std::int64_t setvalueof_callback(void* instance, std::int64_t count, tesk_atom* values) {
    return object_attr_setvalueof(instance, symbols::value.interned(), count, values);
}

}  // namespace

void preset_callback(void* instance) {
    constexpr std::size_t most_values = 13;  // the host's list holds 16, three go before them
    guarded([instance] {
        void* const preset = symbols::preset.object();
        if (preset == nullptr) return;
        std::int64_t count = 0;
        tesk_atom* values = nullptr;
        const std::int64_t error =
            object_attr_getvalueof(instance, symbols::value.interned(), &count, &values);
        const host_memory<tesk_atom> owned(count != 0 ? values : nullptr);
        if (error == 0) {
            atoms list = atoms_from(count, values);
            if (list.size() > most_values) {
                object_error(instance,
                             "Too many values to be stored as a preset. Truncating list.");
                list.resize(most_values);
            }
            tesk_symbol* const class_name =
                require_pointer(object_classname(instance), "object_classname", "preset");
            list.insert(list.begin(),
                        {atom(instance), atom(symbol(class_name)), atom(symbols::value)});
            if (binbuf_insert(preset, nullptr, static_cast<std::int64_t>(list.size()),
                              list.data()) != 0)
                object_error(instance, "the host refused binbuf_insert: not in the preset");
        }
    });
}

void refused_properties::report(const std::string& class_name) const {
    if (count > 0)
        object_error(nullptr, "%s: the host refused %d properties of attributes, the first: %s",
                     class_name.c_str(), count, first.c_str());
}

void register_attribute(tesk_class* of_class, attribute_base& attribute,
                        refused_properties& refused) {
    if (attribute.visibility == attribute_visibility::disabled) return;
    const property_writer write{of_class, attribute, refused};
    attribute.create(of_class, attribute_getter_callback, attribute_setter_callback, false);
    write.label();
    if (const auto style = style_names.find(attribute.style); style != style_names.end())
        write.parse("style", symbols::symbol_type, style->second);
    write_default(write);
    if (!attribute.category.empty())
        write.value("category", symbols::symbol_type, attribute.category);
    write.value("order", symbols::long_integer, attribute.order);
    write_range(write);
    if (attribute.name == symbols::value) {
        add_method(of_class, getvalueof_callback, "getvalueof", type_private);
        add_method(of_class, setvalueof_callback, "setvalueof", type_private);
        add_method(of_class, preset_callback, "preset", type_none);
    }
}

}  // namespace kv7::ply
