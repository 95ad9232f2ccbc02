// What the host offers to an object: its calls as plain C declarations, and the few records that
// both sides read. The loader binds the calls; nothing here is defined by the object.
//
// Each call or group is tagged with the threads that may call it: [main] the host's main thread,
// [any] any thread, also the audio thread where nothing else is said; what allocates or locks at
// the host is not for the audio thread inside a vector, whatever its tag.
#pragma once

#include <stdint.h>

// Names ours, layouts the host's. An error return is non-zero.
extern "C" {

struct tesk_class;  // a class of objects, made by class_new

// An interned name: equal names, equal pointer. Never freed.
struct tesk_symbol {
    const char* name;  // the text, first thing the pointer leads to
    void* object;      // what the host has bound to the name, or null
};

// A value that crosses the boundary: 16 bytes.
struct tesk_atom {
    uint16_t type;  // 0 none, 1 long, 2 float, 3 symbol, 4 object
    union {
        int64_t as_long;
        double as_float;
        tesk_symbol* as_symbol;
        void* as_object;
    } value;
};

// How every signal object begins; the device object follows it.
struct tesk_signal_object {
    tesk_class* of_class;  // the host's
    void* record;          // the host's
    void* reserved[5];     // the host's
    uint16_t flags;        // miscellaneous; bit 0 is set by the object
};

struct tesk_point {
    double x, y;
};

struct tesk_rectangle {
    double x, y, width, height;
};

struct tesk_color {
    double red, green, blue, alpha;  // 0 to 1
};

// One finger of a touch, as the host hands it to the "mt_..." methods.
struct tesk_touch {
    int64_t index;       // which finger
    tesk_point point;    // in the box
    uint32_t modifiers;  // keys held
    uint32_t type;       // kind of pointer
};

// Any function handed to the host; it is called with the argument list its name stands for.
typedef void (*tesk_method)(void);

typedef void* (*tesk_new)(tesk_symbol* name, int64_t count, tesk_atom* values);
typedef void (*tesk_free)(void* instance);
typedef int64_t (*tesk_getter)(void* instance, void* attribute, int64_t* count, tesk_atom** values);
typedef int64_t (*tesk_setter)(void* instance, void* attribute, int64_t count, tesk_atom* values);
typedef void (*tesk_deferred)(void* object, tesk_symbol* symbol, int16_t count, tesk_atom* values);
typedef void (*tesk_perform)(void* instance, void* chain, double** inputs, int64_t input_count,
                             double** outputs, int64_t output_count, int64_t frames, int64_t flags,
                             void* user);
typedef void (*tesk_dsp_add)(void* chain, void* instance, tesk_perform perform, int64_t flags,
                             void* user);

// ---- TeskAudio.dll ----

void class_dspinit(tesk_class* of_class);          // [main]
void z_dsp_setup(void* instance, int64_t inlets);  // [main]
void z_dsp_free(void* instance);                   // [main] on return perform runs no more
double sys_getsr(void);                            // [any] Hz
int64_t sys_getblksize(void);                      // [any] samples a vector

// ---- vrxlib.dll ----

int64_t vrx_class_addattr(tesk_class* of_class, void* attribute);  // [main]

// ---- TeskAPI.dll ----

// Classes [main]. type: the method types, 0 to 4, 8, 9 and 14; end is 0.
tesk_class* class_new(const char* name, tesk_new make, tesk_free free, int64_t size, void* menu,
                      int32_t type, int32_t end);
int64_t class_addmethod(tesk_class* of_class, tesk_method method, const char* name, int32_t type,
                        int32_t end);
int64_t class_addattr(tesk_class* of_class, void* attribute);
int64_t class_register(tesk_symbol* name_space, tesk_class* of_class);

// Attributes of a class and their properties [main].
void* attr_offset_new(const char* name, tesk_symbol* type, int64_t flags, tesk_getter getter,
                      tesk_setter setter, int64_t offset);
void* attr_offset_array_new(const char* name, tesk_symbol* type, int64_t most, int64_t flags,
                            tesk_getter getter, tesk_setter setter, int64_t count_offset,
                            int64_t offset);
int64_t class_time_addattr(tesk_class* of_class, const char* name, const char* label,
                           int64_t flags);
int64_t class_attr_addattr_format(tesk_class* of_class, const char* name, const char* property,
                                  tesk_symbol* type, int64_t flags, const char* format, ...);
int64_t class_attr_addattr_parse(tesk_class* of_class, const char* name, const char* property,
                                 tesk_symbol* type, int64_t flags, const char* text);
int64_t class_attr_addattr_atoms(tesk_class* of_class, const char* name, const char* property,
                                 tesk_symbol* type, int64_t flags, int64_t count,
                                 tesk_atom* values);
void* class_attr_get(tesk_class* of_class, tesk_symbol* name);
int64_t object_parameter_color_get(void* object, tesk_symbol* color, tesk_color* rgba);
int64_t class_parameter_register_default_color(tesk_class* of_class, tesk_symbol* name,
                                               tesk_symbol* color);

// Objects [main].
void* object_alloc(tesk_class* of_class);  // zeroed, owned by the host; any alignment from 8 on
void object_free(void* object);
void* object_new_imp(tesk_symbol* name_space, tesk_symbol* class_name, const char* name,
                     tesk_symbol* type, int64_t flags, tesk_getter getter, tesk_setter setter,
                     int64_t count_offset);
void* object_method_imp(void* object, tesk_symbol* message);
tesk_method object_method_direct_getmethod(void* object, tesk_symbol* message);
void* object_method_direct_getobject(void* object, tesk_symbol* message);
int64_t object_attach_byptr_register(void* object, void* registered, tesk_symbol* name_space);
int64_t object_notify(void* object, tesk_symbol* message, void* data);  // [any]
tesk_symbol* object_classname(void* object);
int64_t object_classname_compare(void* object, tesk_symbol* name);  // 1 when equal
void object_error(void* object, const char* format, ...);           // [any]

// Attributes of an object [any]: the setter runs on the calling thread.
int64_t object_attr_setvalueof(void* object, tesk_symbol* name, int64_t count, tesk_atom* values);
int64_t object_attr_getvalueof(void* object, tesk_symbol* name, int64_t* count,
                               tesk_atom** values);  // values go back through sysmem_freeptr
int64_t object_attr_getlong(void* object, tesk_symbol* name);
int64_t object_attr_setdisabled(void* object, tesk_symbol* name, int64_t disabled);
int64_t attr_args_offset(int16_t count, tesk_atom* values);  // atoms before the first attribute
void attr_args_process(void* object, int16_t count, tesk_atom* values);

// Ports and drawing [main].
void* outlet_new(void* object, const char* type);
int64_t proxy_getinlet(void* object);  // [any] of the message under way on this thread
void* patcherview_get_jgraphics(void* view);
void jbox_get_rect_for_view(void* box, void* view, tesk_rectangle* rectangle);

// Threads.
int16_t systhread_ismainthread(void);                   // [any]
void* qelem_new(void* argument, tesk_method function);  // [main] void (*)(void* argument)
void qelem_set(void* qelem);                            // [any] fires once on the main thread
void qelem_free(void* qelem);                           // [main] cancels one that is set
// [any]; function runs on the main thread.
void defer(void* object, tesk_deferred function, tesk_symbol* symbol, int16_t count,
           tesk_atom* values);

// Atoms and symbols [any].
int64_t atom_setlong(tesk_atom* atom, int64_t value);
int64_t atom_setfloat(tesk_atom* atom, double value);
int64_t atom_setsym(tesk_atom* atom, tesk_symbol* value);
int64_t atom_setobj(tesk_atom* atom, void* value);
int64_t atom_getlong(const tesk_atom* atom);
double atom_getfloat(const tesk_atom* atom);
tesk_symbol* atom_getsym(const tesk_atom* atom);
void* atom_getobj(const tesk_atom* atom);
int64_t atom_gettext(int64_t count, const tesk_atom* values, int64_t* size, char** text,
                     int64_t flags);  // the text goes back through sysmem_freeptr
tesk_symbol* gensym(const char* text);
tesk_symbol* gensym_tr(const char* text);  // a label, which the host may translate

// Paths [main]: a folder is a number, 0 none; names hold at most 2048 characters, slashes between
// them.
int16_t locatefile_extended(char* name, int16_t* path, uint32_t* type, const uint32_t* types,
                            int16_t type_count);
int16_t typelist_make(uint32_t* types, int16_t capacity, int16_t kind);  // how many were written
int16_t path_getpath(int16_t path, const char* name, int16_t* folder);
int16_t path_nameconform(const char* name, char* conformed, int32_t style, int32_t type);
int16_t path_frompathname(const char* name, int16_t* path, char* file_name);
int16_t path_createfolder(int16_t path, const char* name, int16_t* folder);
int16_t path_toabsolutesystempath(int16_t path, const char* name, char* absolute);
int16_t path_getmoddate(int16_t path, uint64_t* date);
int16_t path_getfilemoddate(const char* name, int16_t path, uint64_t* date);

// Dictionaries and presets [main].
void* dictionary_new(void);
void* dictobj_findregistered_retain(tesk_symbol* name);
int64_t dictobj_release(void* dictionary);
int64_t binbuf_insert(void* preset, void* reserved, int64_t count, tesk_atom* values);

// Memory and version [any].
void* sysmem_newptr(int64_t size);
void sysmem_freeptr(void* memory);
uint16_t teskversion(void);  // 0x900 for 9.0

}  // extern "C"
