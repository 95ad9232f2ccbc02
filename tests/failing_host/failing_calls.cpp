// The host's calls once more, in the program: the loader finds them before those of the host's
// library. Each hands on to the library unless it is to fail and an object file called it.
#include "tests/failing_host/failing_calls.h"

#include <dlfcn.h>

#include <limits>
#include <mutex>
#include <string_view>

#include "host/calls.h"

namespace {

std::mutex mutex;
failing_calls::counts calls;
std::string failing;
int failing_occurrence = 0;

bool fails(const char* call, void* return_address) {
    Dl_info caller{};
    if (dladdr(return_address, &caller) == 0 ||
        !std::string_view(caller.dli_fname).ends_with(".tkx64"))
        return false;
    const std::lock_guard lock(mutex);
    return ++calls[call] == failing_occurrence && call == failing;
}

}  // namespace

std::function<void(const std::string&)> failing_calls::before_setvalueof;

void failing_calls::start() {
    start("", 0);
}
void failing_calls::start(const std::string& call, int occurrence) {
    const std::lock_guard lock(mutex);
    calls.clear();
    failing = call;
    failing_occurrence = occurrence;
}
failing_calls::counts failing_calls::made() {
    const std::lock_guard lock(mutex);
    return calls;
}

// CALL(result, name, what a failure answers, parameters, arguments)
#define CALL(result, name, failure, parameters, arguments)                                   \
    result name parameters {                                                                 \
        static const auto real = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name)); \
        if (fails(#name, __builtin_return_address(0))) return failure;                       \
        return real arguments;                                                               \
    }

namespace {
constexpr double no_number = std::numeric_limits<double>::quiet_NaN();
}

extern "C" {

CALL(tesk_class*, class_new, nullptr,
     (const char* a, tesk_new b, tesk_free c, int64_t d, void* e, int32_t f, int32_t g),
     (a, b, c, d, e, f, g))
CALL(int64_t, class_addmethod, 1,
     (tesk_class * a, tesk_method b, const char* c, int32_t d, int32_t e), (a, b, c, d, e))
CALL(int64_t, class_addattr, 1, (tesk_class * a, void* b), (a, b))
CALL(int64_t, vrx_class_addattr, 1, (tesk_class * a, void* b), (a, b))
CALL(int64_t, class_register, 1, (tesk_symbol * a, tesk_class* b), (a, b))
CALL(void*, attr_offset_new, nullptr,
     (const char* a, tesk_symbol* b, int64_t c, tesk_getter d, tesk_setter e, int64_t f),
     (a, b, c, d, e, f))
CALL(void*, attr_offset_array_new, nullptr,
     (const char* a, tesk_symbol* b, int64_t c, int64_t d, tesk_getter e, tesk_setter f, int64_t g,
      int64_t h),
     (a, b, c, d, e, f, g, h))
CALL(void*, object_new_imp, nullptr,
     (tesk_symbol * a, tesk_symbol* b, const char* c, tesk_symbol* d, int64_t e, tesk_getter f,
      tesk_setter g, int64_t h),
     (a, b, c, d, e, f, g, h))
CALL(int64_t, class_attr_addattr_parse, 1,
     (tesk_class * a, const char* b, const char* c, tesk_symbol* d, int64_t e, const char* f),
     (a, b, c, d, e, f))
CALL(int64_t, class_attr_addattr_atoms, 1,
     (tesk_class * a, const char* b, const char* c, tesk_symbol* d, int64_t e, int64_t f,
      tesk_atom* g),
     (a, b, c, d, e, f, g))
CALL(void*, class_attr_get, nullptr, (tesk_class * a, tesk_symbol* b), (a, b))
CALL(int64_t, object_parameter_color_get, 1, (void* a, tesk_symbol* b, tesk_color* c), (a, b, c))
CALL(int64_t, class_parameter_register_default_color, 1,
     (tesk_class * a, tesk_symbol* b, tesk_symbol* c), (a, b, c))
CALL(void*, object_alloc, nullptr, (tesk_class * a), (a))
CALL(void*, object_method_imp, nullptr, (void* a, tesk_symbol* b), (a, b))
CALL(tesk_method, object_method_direct_getmethod, nullptr, (void* a, tesk_symbol* b), (a, b))
CALL(void*, object_method_direct_getobject, nullptr, (void* a, tesk_symbol* b), (a, b))
CALL(int64_t, object_attach_byptr_register, 1, (void* a, void* b, tesk_symbol* c), (a, b, c))
CALL(int64_t, object_notify, 1, (void* a, tesk_symbol* b, void* c), (a, b, c))
CALL(tesk_symbol*, object_classname, nullptr, (void* a), (a))
CALL(int64_t, object_attr_getvalueof, 1, (void* a, tesk_symbol* b, int64_t* c, tesk_atom** d),
     (a, b, c, d))
CALL(int64_t, attr_args_offset, std::numeric_limits<int64_t>::max(), (int16_t a, tesk_atom* b),
     (a, b))
CALL(void*, outlet_new, nullptr, (void* a, const char* b), (a, b))
CALL(int64_t, proxy_getinlet, -1, (void* a), (a))
CALL(int16_t, systhread_ismainthread, 0, (void), ())
CALL(void*, qelem_new, nullptr, (void* a, tesk_method b), (a, b))
CALL(int64_t, atom_gettext, 1, (int64_t a, const tesk_atom* b, int64_t* c, char** d, int64_t e),
     (a, b, c, d, e))
CALL(tesk_symbol*, gensym, nullptr, (const char* a), (a))
CALL(tesk_symbol*, gensym_tr, nullptr, (const char* a), (a))
CALL(tesk_symbol*, atom_getsym, nullptr, (const tesk_atom* a), (a))
CALL(double, sys_getsr, no_number, (void), ())
CALL(int64_t, sys_getblksize, 0, (void), ())
CALL(int16_t, locatefile_extended, 1,
     (char* a, int16_t* b, uint32_t* c, const uint32_t* d, int16_t e), (a, b, c, d, e))
CALL(int16_t, typelist_make, std::numeric_limits<int16_t>::max(),
     (uint32_t * a, int16_t b, int16_t c), (a, b, c))
CALL(int16_t, path_getpath, 1, (int16_t a, const char* b, int16_t* c), (a, b, c))
CALL(int16_t, path_nameconform, 1, (const char* a, char* b, int32_t c, int32_t d), (a, b, c, d))
CALL(int16_t, path_frompathname, 1, (const char* a, int16_t* b, char* c), (a, b, c))
CALL(int16_t, path_createfolder, 1, (int16_t a, const char* b, int16_t* c), (a, b, c))
CALL(int16_t, path_toabsolutesystempath, 1, (int16_t a, const char* b, char* c), (a, b, c))
CALL(int16_t, path_getmoddate, 1, (int16_t a, uint64_t* b), (a, b))
CALL(int16_t, path_getfilemoddate, 1, (const char* a, int16_t b, uint64_t* c), (a, b, c))
CALL(void*, dictionary_new, nullptr, (void), ())
CALL(void*, dictobj_findregistered_retain, nullptr, (tesk_symbol * a), (a))
CALL(void*, sysmem_newptr, nullptr, (int64_t a), (a))
CALL(int64_t, binbuf_insert, 1, (void* a, void* b, int64_t c, tesk_atom* d), (a, b, c, d))
CALL(uint16_t, teskversion, 0, (void), ())

int64_t object_attr_setvalueof(void* object, tesk_symbol* name, int64_t count, tesk_atom* values) {
    static const auto real = reinterpret_cast<decltype(&object_attr_setvalueof)>(
        dlsym(RTLD_NEXT, "object_attr_setvalueof"));
    if (fails("object_attr_setvalueof", __builtin_return_address(0))) return 1;
    if (failing_calls::before_setvalueof) failing_calls::before_setvalueof(name->name);
    return real(object, name, count, values);
}

}  // extern "C"
