// Classes and their attributes as objects register them, with a trace of every call.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>

#include "host/state.h"

namespace {

using tesk::state;

std::string hexadecimal(int64_t flags) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(flags));
    return text;
}

void* new_attribute(const char* call, const char* name, tesk_symbol* type, int64_t most,
                    int64_t flags, tesk_getter getter, tesk_setter setter) {
    state().trace(std::string(call) + " " + name + " " + type->name + " " + std::to_string(most) +
                  " " + hexadecimal(flags));
    return new tesk_class::attribute{
        &state().attribute_class, gensym(name), type, flags, most, getter, setter};
}

int64_t add_attribute(const char* call, tesk_class* of_class, void* attribute) {
    std::unique_ptr<tesk_class::attribute> added(static_cast<tesk_class::attribute*>(attribute));
    state().trace(std::string(call) + " " + added->name->name);
    of_class->info.attributes.push_back(
        {added->name->name, added->type->name, added->flags, added->most, {}});
    of_class->attributes.push_back(std::move(added));
    return 0;
}

int64_t add_property(const char* call, tesk_class* of_class, const char* name, const char* key,
                     tesk_symbol* type, int64_t flags, const std::string& text) {
    state().trace(std::string(call) + " " + name + " " + key + " " + type->name + " " +
                  std::to_string(flags) + " " + text);
    tesk::attribute_info* const info = of_class->find_info(name);
    if (info == nullptr) return 1;
    const auto found = std::find_if(info->properties.begin(), info->properties.end(),
                                    [key](const auto& p) { return p.first == key; });
    if (found != info->properties.end())
        found->second = text;
    else
        info->properties.emplace_back(key, text);
    return 0;
}

}  // namespace

extern "C" {

tesk_class* class_new(const char* name, tesk_new make, tesk_free free, int64_t size, void*,
                      int32_t type, int32_t) {
    state().trace(std::string("class_new ") + name + " " + std::to_string(type));
    auto made = std::make_unique<tesk_class>();
    made->name = gensym(name);
    made->make = make;
    made->free = free;
    made->size = size;
    made->info.name = name;
    return state().classes.emplace_back(std::move(made)).get();
}

int64_t class_addmethod(tesk_class* of_class, tesk_method method, const char* name, int32_t type,
                        int32_t) {
    state().trace(std::string("class_addmethod ") + name + " " + std::to_string(type));
    of_class->methods.push_back({gensym(name), method, type});
    of_class->info.methods.push_back({name, type});
    return 0;
}

void* attr_offset_new(const char* name, tesk_symbol* type, int64_t flags, tesk_getter getter,
                      tesk_setter setter, int64_t) {
    return new_attribute("attr_offset_new", name, type, 1, flags, getter, setter);
}

void* attr_offset_array_new(const char* name, tesk_symbol* type, int64_t most, int64_t flags,
                            tesk_getter getter, tesk_setter setter, int64_t, int64_t) {
    return new_attribute("attr_offset_array_new", name, type, most, flags, getter, setter);
}

// The attributes of matrix classes; nothing else is made in that name space here.
void* object_new_imp(tesk_symbol* name_space, tesk_symbol* class_name, const char* name,
                     tesk_symbol* type, int64_t flags, tesk_getter getter, tesk_setter setter,
                     int64_t) {
    const bool is_array = class_name == gensym("vrx_attr_offset_array");
    if (name_space != gensym("vrxter") || (!is_array && class_name != gensym("vrx_attr_offset")))
        return nullptr;
    return new_attribute(class_name->name, name, type, is_array ? 65535 : 1, flags, getter, setter);
}

int64_t class_addattr(tesk_class* of_class, void* attribute) {
    return add_attribute("class_addattr", of_class, attribute);
}

int64_t vrx_class_addattr(tesk_class* of_class, void* attribute) {
    return attribute == nullptr ? 1 : add_attribute("vrx_class_addattr", of_class, attribute);
}

int64_t class_time_addattr(tesk_class* of_class, const char* name, const char* label,
                           int64_t flags) {
    state().trace(std::string("class_time_addattr ") + name + " " + label + " " +
                  hexadecimal(flags));
    of_class->info.attributes.push_back({name, "time", flags, 1, {}});
    return 0;
}

// The one format in use is "s": a symbol.
int64_t class_attr_addattr_format(tesk_class* of_class, const char* name, const char* property,
                                  tesk_symbol* type, int64_t flags, const char* format, ...) {
    if (std::string(format) != "s") return 1;
    std::va_list values;
    va_start(values, format);
    const std::string text = va_arg(values, tesk_symbol*)->name;
    va_end(values);
    return add_property("class_attr_addattr_format", of_class, name, property, type, flags, text);
}

int64_t class_attr_addattr_parse(tesk_class* of_class, const char* name, const char* property,
                                 tesk_symbol* type, int64_t flags, const char* text) {
    return add_property("class_attr_addattr_parse", of_class, name, property, type, flags, text);
}

int64_t class_attr_addattr_atoms(tesk_class* of_class, const char* name, const char* property,
                                 tesk_symbol* type, int64_t flags, int64_t count,
                                 tesk_atom* values) {
    std::string text;
    for (int64_t i = 0; i < count; ++i) {
        if (i > 0) text += ' ';
        text += values[i].type == 3 ? std::string(values[i].value.as_symbol->name)
                                    : tesk::text_of_atoms({values[i]});
    }
    return add_property("class_attr_addattr_atoms", of_class, name, property, type, flags, text);
}

void* class_attr_get(tesk_class* of_class, tesk_symbol* name) {
    return const_cast<tesk_class::attribute*>(of_class->find_attribute(name));
}

// Every name of the theme has the same colour here.
int64_t object_parameter_color_get(void*, tesk_symbol*, tesk_color* rgba) {
    *rgba = {0.25, 0.5, 0.75, 1.0};
    return 0;
}

int64_t class_parameter_register_default_color(tesk_class*, tesk_symbol* name, tesk_symbol* color) {
    state().trace(std::string("class_parameter_register_default_color ") + name->name + " " +
                  color->name);
    return 0;
}

void class_dspinit(tesk_class*) {
    state().trace("class_dspinit");
}

int64_t class_register(tesk_symbol* name_space, tesk_class* of_class) {
    state().trace(std::string("class_register ") + name_space->name);
    of_class->info.name_space = name_space->name;
    state().by_name[of_class->info.name] = of_class;
    state().registered_last = of_class;
    return 0;
}

}  // extern "C"
