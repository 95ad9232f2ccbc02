#include "framework/attribute_base.h"

#include <algorithm>
#include <utility>

#include "framework/class_registration.h"
#include "framework/guarded.h"
#include "framework/symbol_table.h"

namespace kv7::ply {

namespace {

constexpr std::int64_t flags_of_hidden = 0x200;
constexpr std::int64_t flags_of_readonly = 0x202;
constexpr std::int64_t flags_of_matrix = 0x8040000;
constexpr std::int64_t most_elements = 65535;

// Null for an attribute that the host cannot name or the object does not hold.
attribute_base* found(void* host_object, void* attribute) {
    const symbol name{
        static_cast<tesk_symbol*>(object_method_imp(attribute, symbols::getname.interned()))};
    return object_of(host_object).attributes.find(name.text());
}

// The host may read an element count at this distance from the object. The count lies in the
// attribute, which each instance has elsewhere, so the host gets none: it calls the getter.
constexpr std::int64_t no_count_offset = 0;

}  // namespace

attribute_base::attribute_base(object_base* owner_, const std::string& name_)
    : owner(*owner_), name(name_), title(name) {}

attribute_base& attribute_base::assign(const atoms& values) {
    set(values, true, false);
    return *this;
}

bool attribute_base::sent_to_host(const atoms& values, bool notify) {
    void* const host_object = owner.valid_host_object();
    if (!notify || registered_class() == nullptr || host_object == nullptr) return false;
    atoms copy = values;
    if (object_attr_setvalueof(host_object, name.interned(), static_cast<std::int64_t>(copy.size()),
                               copy.data()) == 0)
        return true;
    object_error(host_object, "%s: the host refused object_attr_setvalueof; set without it",
                 name.c_str());
    return false;
}

bool attribute_base::may_apply_here() const {
    return owner.attributes_any_thread() || owner.any_thread_class() ||
           systhread_ismainthread() != 0;
}

void attribute_base::notify_if_value() {
    if (name == symbols::value)
        object_notify(owner.valid_host_object(), symbols::modified.interned(), nullptr);
}

void attribute_base::create(tesk_class* of_class, tesk_getter host_getter, tesk_setter host_setter,
                            bool is_matrix) {
    create_at_host(of_class, host_getter, host_setter, is_matrix, false);
}

void attribute_base::create_at_host(tesk_class* of_class, tesk_getter host_getter,
                                    tesk_setter host_setter, bool is_matrix, bool is_array) {
    const bool hidden = visibility == attribute_visibility::hidden;
    const std::int64_t flags = (readonly ? flags_of_readonly : 0) | (hidden ? flags_of_hidden : 0);
    const std::string about = "attribute " + name.text();
    // Adds what the host made to its class; what the class refuses goes back.
    const auto add = [&](void* made, const char* made_by, auto* class_add, const char* added_by) {
        require_pointer(made, made_by, about);
        const std::int64_t error = class_add(of_class, made);
        if (error != 0) object_free(made);
        require_success(error, added_by, about);
    };
    if (style == style_time) {
        require_success(class_time_addattr(of_class, name.c_str(), title.c_str(), flags),
                        "class_time_addattr", about);
    } else if (is_matrix) {
        const symbol kind = is_array ? "vrx_attr_offset_array" : "vrx_attr_offset";
        add(object_new_imp(symbol("vrxter").interned(), kind.interned(), name.c_str(),
                           datatype.interned(),
                           flags_of_matrix | (readonly ? flags_of_readonly : 0), host_getter,
                           host_setter, no_count_offset),
            "object_new_imp", vrx_class_addattr, "vrx_class_addattr");
    } else if (is_array) {
        add(attr_offset_array_new(name.c_str(), datatype.interned(), most_elements, flags,
                                  host_getter, host_setter, no_count_offset, 0),
            "attr_offset_array_new", class_addattr, "class_addattr");
    } else {
        add(attr_offset_new(name.c_str(), datatype.interned(), flags, host_getter, host_setter, 0),
            "attr_offset_new", class_addattr, "class_addattr");
    }
    if (hidden)
        require_success(class_attr_addattr_parse(of_class, name.c_str(), "invisible",
                                                 symbols::long_integer.interned(), 1, "1"),
                        "class_attr_addattr_parse", about);
}

deferred_attribute_set::deferred_attribute_set(attribute_base* attribute, function apply)
    : attribute_(attribute),
      apply_(apply),
      qelem_(this, apply_pending, "attribute " + attribute->name.text()) {}

deferred_attribute_set::~deferred_attribute_set() {
    delete pending_.exchange(nullptr);
}

void deferred_attribute_set::post(const atoms& values) {
    auto next = std::make_unique<atoms>(values);
    // Publishes the complete list; the one it replaces belongs to this thread again.
    const std::unique_ptr<atoms> replaced(
        pending_.exchange(next.release(), std::memory_order_acq_rel));
    qelem_.set();
}

void deferred_attribute_set::apply_pending(void* record) {
    guarded([record] {
        auto& self = *static_cast<deferred_attribute_set*>(record);
        // Acquires the list as the writer completed it.
        const std::unique_ptr<atoms> values(
            self.pending_.exchange(nullptr, std::memory_order_acq_rel));
        if (values) self.apply_(*self.attribute_, *values);
    });
}

std::int64_t attribute_getter_callback(void* host_object, void* attribute, std::int64_t* count,
                                       tesk_atom** values) {
    guarded([=] {
        const attribute_base* const asked = found(host_object, attribute);
        if (asked == nullptr) return;
        const atoms got = asked->get();
        const auto size = static_cast<std::int64_t>(got.size());
        if (*count != size || *values == nullptr) {
            if (*count != 0 && *values != nullptr) sysmem_freeptr(*values);
            *count = 0;
            *values = static_cast<tesk_atom*>(
                sysmem_newptr(size * static_cast<std::int64_t>(sizeof(atom))));
            if (*values == nullptr && size > 0) {
                object_error(host_object, "%s: no memory for its value", asked->name.c_str());
                return;
            }
            *count = size;
        }
        std::copy(got.begin(), got.end(), *values);
    });
    return 0;
}

std::int64_t attribute_setter_callback(void* host_object, void* attribute, std::int64_t count,
                                       tesk_atom* values) {
    guarded([=] {
        attribute_base* const named = found(host_object, attribute);
        if (named != nullptr) named->set(atoms_from(count, values), false, false);
    });
    return 0;
}

}  // namespace kv7::ply
