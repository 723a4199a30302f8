// A thread that ends gives its free buffers back. Those of the thread that runs at the end of the process stay.
#include <pthread.h>

#include "service/work_pool.hpp"

namespace qrv {
namespace {

struct EndOfThread {
    pthread_key_t key;
    bool made;
    EndOfThread() : made(pthread_key_create(&key, [](void*) { qrv_serv_free_thread_buffers(); }) == 0) {}
};

} // namespace

// Another destructor that calls this library after that of the key sets it anew, and the key's is called again.
void keep_buffers_of_thread() {
    static const EndOfThread end;
    if (end.made)
        pthread_setspecific(end.key, &end);
}

} // namespace qrv
