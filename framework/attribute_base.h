// A named value of an object as the host sees it: what it is called and how it is shown; the
// typed half is attribute<T, ...>.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "framework/atoms.h"
#include "framework/host_answer.h"
#include "framework/object_base.h"
#include "framework/qelem.h"

namespace kv7::ply {

using attribute_setter = std::function<atoms(const atoms& values, int inlet)>;
using attribute_getter = std::function<atoms()>;

enum class attribute_visibility : std::int32_t { shown = 0, hidden = 1, disabled = 2 };

// Numbers of the inspector's ways to show a value; 8 has no text.
enum attribute_style : std::int32_t {
    style_none = 0,
    style_onoff = 2,
    style_enumindex = 4,
    style_font = 6,
    style_time = 8,
};

class attribute_base {
public:
    object_base& owner;
    symbol name;              // key in the owner's attributes, name at the host
    symbol title;             // label
    symbol datatype;          // "float64" or "long"
    attribute_setter setter;  // optional; its result is what is stored
    attribute_getter getter;  // optional; replaces the stored value on reading
    bool readonly = false;
    attribute_visibility visibility = attribute_visibility::shown;  // disabled: not registered
    std::string description;
    std::int64_t size = 0;            // elements of an array's value; main thread
    std::int32_t style = style_none;  // an attribute_style, or another number of the host
    symbol category;
    std::int32_t order = 0;  // in the inspector
    symbol color;            // a theme colour by name

    virtual attribute_base& assign(const atoms& values);  // through the host when registered
    virtual void set(const atoms& values, bool notify, bool override_readonly) = 0;
    virtual atoms get() const = 0;
    virtual atoms get_for_storage() const { return get(); }
    virtual std::string range_string() const = 0;  // each item in double quotes, then a blank
    virtual void create(tesk_class* of_class, tesk_getter host_getter, tesk_setter host_setter,
                        bool is_matrix);
    virtual std::string default_string() const = 0;

    attribute_base(const attribute_base&) = delete;
    attribute_base& operator=(const attribute_base&) = delete;

protected:
    attribute_base(object_base* owner, const std::string& name);
    ~attribute_base() = default;

    // Hands values to the host, which sets them through the setter callback. False when they are
    // still to be written: nothing to notify, or a refusal, which is reported.
    bool sent_to_host(const atoms& values, bool notify);
    bool may_apply_here() const;  // on this thread, with Threadsafety 0
    void notify_if_value();       // the host, of "value"
    void create_at_host(tesk_class* of_class, tesk_getter host_getter, tesk_setter host_setter,
                        bool is_matrix, bool is_array);
};

// A write on its way to the main thread; a later one that comes before it fires replaces it.
class deferred_attribute_set {
public:
    using function = void (*)(attribute_base& attribute, const atoms& values);

    deferred_attribute_set(attribute_base* attribute, function apply);
    ~deferred_attribute_set();  // drops a write that has not fired
    deferred_attribute_set(const deferred_attribute_set&) = delete;
    deferred_attribute_set& operator=(const deferred_attribute_set&) = delete;
    void post(const atoms& values);  // any thread

private:
    static void apply_pending(void* record);  // main thread
    attribute_base* attribute_;
    function apply_;
    std::atomic<atoms*> pending_{nullptr};  // owned by whoever exchanges it out
    qelem qelem_;
};

// Given to the host for every attribute; any thread. Both answer 0, also for a name that the object
// does not hold. A value for which the host has no memory reads as none, which is reported.
std::int64_t attribute_getter_callback(void* host_object, void* attribute, std::int64_t* count,
                                       tesk_atom** values);
std::int64_t attribute_setter_callback(void* host_object, void* attribute, std::int64_t count,
                                       tesk_atom* values);

}  // namespace kv7::ply
