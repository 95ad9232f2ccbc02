#include "framework/attribute_base.h"

#include <cstddef>
#include <utility>

#include "framework/class_registration.h"
#include "framework/symbol_table.h"

namespace kv7::ply {

namespace {

constexpr std::int64_t flags_of_hidden = 0x200;
constexpr std::int64_t flags_of_readonly = 0x202;
constexpr std::int64_t flags_of_matrix = 0x8040000;
constexpr std::int64_t most_elements = 65535;

attribute_base* found(void* host_object, void* attribute) {
    const symbol name{
        static_cast<tesk_symbol*>(object_method_imp(attribute, symbols::getname.interned()))};
    return object_of(host_object).attributes.find(name.text());
}

// The distance that the host adds to the object to find the count, in units of 8 bytes.
std::int64_t words_to_size(const attribute_base& self) {
    const auto from = reinterpret_cast<std::uintptr_t>(&self.owner);
    const auto to = reinterpret_cast<std::uintptr_t>(&self.size);
    return static_cast<std::int64_t>(to - from) / 8;
}

}  // namespace

attribute_base::attribute_base(object_base* owner_, const std::string& name_)
    : owner(*owner_), name(name_), title(name) {}

attribute_base& attribute_base::assign(const atoms& values) {
    set(values, true, false);
    return *this;
}

bool attribute_base::sent_to_host(const atoms& values, bool notify) {
    if (!notify || registered_class() == nullptr) return false;
    atoms copy = values;
    object_attr_setvalueof(owner.valid_host_object(), name.interned(),
                           static_cast<std::int64_t>(copy.size()), copy.data());
    return true;
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
    if (style == style_time) {
        class_time_addattr(of_class, name.c_str(), title.c_str(), flags);
    } else if (is_matrix) {
        const symbol kind = is_array ? "vrx_attr_offset_array" : "vrx_attr_offset";
        void* const made = object_new_imp(
            symbol("vrxter").interned(), kind.interned(), name.c_str(), datatype.interned(),
            flags_of_matrix | (readonly ? flags_of_readonly : 0), host_getter, host_setter,
            is_array ? words_to_size(*this) : 0);
        vrx_class_addattr(of_class, made);
    } else if (is_array) {
        class_addattr(of_class,
                      attr_offset_array_new(name.c_str(), datatype.interned(), most_elements, flags,
                                            host_getter, host_setter, words_to_size(*this), 0));
    } else {
        class_addattr(of_class, attr_offset_new(name.c_str(), datatype.interned(), flags,
                                                host_getter, host_setter, 0));
    }
    if (hidden)
        class_attr_addattr_parse(of_class, name.c_str(), "invisible",
                                 symbols::long_integer.interned(), 1, "1");
}

deferred_attribute_set::deferred_attribute_set(attribute_base* attribute, function apply)
    : attribute_(attribute),
      apply_(apply),
      qelem_(qelem_new(this, reinterpret_cast<tesk_method>(apply_pending))) {}

deferred_attribute_set::~deferred_attribute_set() {
    qelem_free(qelem_);
    delete pending_.exchange(nullptr);
}

void deferred_attribute_set::post(const atoms& values) {
    auto next = std::make_unique<atoms>(values);
    // The list is complete before the pointer that shows it; a list it replaces is ours again.
    const std::unique_ptr<atoms> replaced(
        pending_.exchange(next.release(), std::memory_order_acq_rel));
    qelem_set(qelem_);
}

void deferred_attribute_set::apply_pending(void* record) {
    guarded(0, [record] {
        auto& self = *static_cast<deferred_attribute_set*>(record);
        // Everything the writer put into the list may be read.
        const std::unique_ptr<atoms> values(
            self.pending_.exchange(nullptr, std::memory_order_acq_rel));
        if (values) self.apply_(*self.attribute_, *values);
        return 0;
    });
}

std::int64_t attribute_getter_callback(void* host_object, void* attribute, std::int64_t* count,
                                       tesk_atom** values) {
    return guarded(std::int64_t{0}, [=] {
        const attribute_base* const asked = found(host_object, attribute);
        if (asked == nullptr) return std::int64_t{0};
        const atoms got = asked->get();
        const auto size = static_cast<std::int64_t>(got.size());
        if (*count != size || *values == nullptr) {
            if (*count != 0 && *values != nullptr) sysmem_freeptr(*values);
            *count = size;
            *values = static_cast<tesk_atom*>(
                sysmem_newptr(size * static_cast<std::int64_t>(sizeof(atom))));
        }
        for (std::size_t i = 0; i < got.size(); ++i) (*values)[i] = got[i];
        return std::int64_t{0};
    });
}

std::int64_t attribute_setter_callback(void* host_object, void* attribute, std::int64_t count,
                                       tesk_atom* values) {
    return guarded(std::int64_t{0}, [=] {
        attribute_base* const named = found(host_object, attribute);
        if (named != nullptr) named->set(atoms_from(count, values), false, false);
        return std::int64_t{0};
    });
}

}  // namespace kv7::ply
