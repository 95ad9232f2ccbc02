// What the host keeps between its calls: classes, instances, the error channel, what is deferred to
// the main thread, and how much memory objects hold.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/calls.h"
#include "host/host.h"

// Every object that the host hands out begins with its class.
struct tesk_class {
    struct method {
        tesk_symbol* name;
        tesk_method function;
        std::int32_t type;
    };
    struct attribute {
        tesk_class* of_class;  // the class of host attributes
        tesk_symbol* name;
        tesk_symbol* type;
        std::int64_t flags;
        std::int64_t most;
        tesk_getter getter;
        tesk_setter setter;
    };

    tesk_symbol* name = nullptr;
    tesk_new make = nullptr;
    tesk_free free = nullptr;
    std::int64_t size = 0;  // bytes of an instance
    std::vector<method> methods;
    std::vector<std::unique_ptr<attribute>> attributes;
    tesk::class_info info;  // the same for programs, with the attributes' properties

    const method* find_method(const tesk_symbol* wanted) const;
    const attribute* find_attribute(const tesk_symbol* wanted) const;
    tesk::attribute_info* find_info(const std::string& wanted);
};

namespace tesk {

struct host_object {
    tesk_class* of_class;
};

struct outlet : host_object {
    std::string type;
};

struct dictionary : host_object {
    std::string registered_name;
    int references = 1;  // its maker's, and one for each retain
};

struct preset : host_object {
    std::vector<std::string> lists;
};

// One instance from the host's side. Outlives the object until its handle goes.
struct instance_record {
    enum perform_state : int { idle, performing, stopped };
    struct signal_chain : host_object {
        instance_record* builds;
    };

    void* block = nullptr;                 // the allocation that holds the object
    tesk_signal_object* object = nullptr;  // null once it is freed
    tesk_class* of_class = nullptr;
    std::int64_t inlets = 0;
    std::vector<std::unique_ptr<outlet>> outlets;  // as created: from last to first
    bool registered = false;

    std::atomic<int> calls{0};        // under way in the object, on any thread
    std::atomic<bool> ending{false};  // a free has begun
    std::atomic<int> state{idle};     // who has the perform routine
    std::atomic<tesk_perform> perform{nullptr};
    std::atomic<void*> user{nullptr};
    std::atomic<bool> signals_ended{false};
    signal_chain chain{};

    std::mutex notification_mutex;
    std::vector<std::string> notifications;
};

// Holds a call into the object open, unless its free has begun.
class call_into {
public:
    explicit call_into(instance_record& record) : record_(record) {
        record_.calls.fetch_add(1);
        if (record_.ending.load()) {
            record_.calls.fetch_sub(1);
            refused_ = true;
        }
    }
    ~call_into() {
        if (!refused_) record_.calls.fetch_sub(1);
    }
    call_into(const call_into&) = delete;
    call_into& operator=(const call_into&) = delete;
    bool refused() const { return refused_; }

private:
    instance_record& record_;
    bool refused_ = false;
};

struct qelem {
    void* argument;
    void (*function)(void*);
    bool is_set = false;  // under the task mutex
};

// Deferred to the main thread: a set qelem, or a call.
struct task {
    qelem* set = nullptr;
    void* object = nullptr;
    tesk_deferred function = nullptr;
    tesk_symbol* symbol = nullptr;
    atom_list values;
};

struct host_state {
    const std::thread::id main_thread = std::this_thread::get_id();

    // Classes of the host's own objects.
    tesk_class attribute_class, chain_class, dictionary_class, outlet_class, preset_class,
        self_class;
    host_object self{&self_class};  // what the name "tesk" is bound to

    // Main thread only.
    std::vector<std::unique_ptr<tesk_class>> classes;
    std::map<std::string, tesk_class*> by_name;
    std::map<std::string, std::string> class_of_file;
    tesk_class* registered_last = nullptr;
    std::vector<std::string> traffic;
    std::vector<instance_record*> instances;
    std::vector<instance_record*> allocated;  // by the make under way
    std::map<std::string, dictionary*> dictionaries;
    std::vector<std::string> search_folders;
    std::vector<std::string> folders;  // a path's number is its index, from 1

    std::atomic<std::uint16_t> version{0x900};
    std::atomic<double> rate{44100.0};          // Hz
    std::atomic<std::int64_t> vector_size{64};  // samples
    std::atomic<bool> library{false};
    std::atomic<bool> guarded{true};  // perform does not run while "dsp64" does

    struct {
        std::atomic<std::int64_t> pointers{0}, instances{0}, qelems{0}, outlets{0}, dictionaries{0},
            registrations{0};
    } live;

    std::mutex error_mutex;
    std::vector<std::string> errors;

    std::mutex task_mutex;
    std::deque<task> tasks;

    host_state();
    void error(const std::string& line);  // any thread
    void trace(const std::string& line) { traffic.push_back(line); }
};

host_state& state();  // made by the first call, never destroyed

instance_record* record_of(void* object);  // null for null and for what is no instance

// The end of an instance's memory, outlets and registrations; the object in it is gone.
void give_back(instance_record& record);
void drop_tasks_of(const void* object);

// Calls of a host attribute on behalf of programs and of objects; non-zero when refused.
std::int64_t set_attribute(instance_record& record, const tesk_symbol* name, atom_list values);

double as_number(const std::string& text);  // NaN unless all of it is one
std::vector<std::string> quoted_items(const std::string& text);

}  // namespace tesk
