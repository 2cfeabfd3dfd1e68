/* Preloaded into ippeveprinter, which does not start where no name service announces it on the network:
   answers for one, and announces nothing. */
#include <stddef.h>

static char something;

void* avahi_threaded_poll_new(void) {
    return &something;
}
const void* avahi_threaded_poll_get(void* poll) {
    (void)poll;
    return &something;
}
int avahi_threaded_poll_start(void* poll) {
    (void)poll;
    return 0;
}
void avahi_threaded_poll_lock(void* poll) {
    (void)poll;
}
void avahi_threaded_poll_unlock(void* poll) {
    (void)poll;
}
void* avahi_client_new(const void* poll, int flags, void* callback, void* data, int* error) {
    (void)poll, (void)flags, (void)callback, (void)data, (void)error;
    return &something;
}
int avahi_client_errno(void* client) {
    (void)client;
    return 0;
}
const char* avahi_client_get_host_name_fqdn(void* client) {
    (void)client;
    return "localhost";
}
void* avahi_entry_group_new(void* client, void* callback, void* data) {
    (void)client, (void)callback, (void)data;
    return &something;
}
int avahi_entry_group_free(void* group) {
    (void)group;
    return 0;
}
int avahi_entry_group_commit(void* group) {
    (void)group;
    return 0;
}
int avahi_entry_group_add_service_strlst(void* group) {
    (void)group;
    return 0;
}
int avahi_entry_group_add_service_subtype(void* group) {
    (void)group;
    return 0;
}
