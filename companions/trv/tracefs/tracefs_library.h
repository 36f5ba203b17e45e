// What is used of libtracefs. The library's own header is one of C in ways that C++ does not take.
#pragma once

struct tracefs_instance;
struct tep_handle;

extern "C" {
const char* tracefs_tracing_dir(void);
// Names of instances that fit the expression; null when there are none. tracefs_list_free frees them.
char** tracefs_instances(const char* regex);
void tracefs_list_free(char** list);
bool tracefs_instance_exists(const char* name);
// Makes the instance, or takes the one that is there; null with errno. Freeing does not remove it, destroying
// does not free it.
tracefs_instance* tracefs_instance_create(const char* name);
int tracefs_instance_destroy(tracefs_instance* instance);
void tracefs_instance_free(tracefs_instance* instance);
int tracefs_instance_file_write(tracefs_instance* instance, const char* file, const char* text);
char* tracefs_instance_file_read(tracefs_instance* instance, const char* file, int* size);
int tracefs_trace_on(tracefs_instance* instance);
int tracefs_trace_off(tracefs_instance* instance);
int tracefs_event_enable(tracefs_instance* instance, const char* system, const char* event);
int tracefs_event_disable(tracefs_instance* instance, const char* system, const char* event);
// The formats of the events of some systems, a null behind the last name.
tep_handle* tracefs_local_events_system(const char* tracingDirectory, const char* const* systems);
// The number of a descriptor, below 0 with errno.
int tracefs_instance_file_open(tracefs_instance* instance, const char* file, int mode);
}
