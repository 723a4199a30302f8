// What a fork does to the library.
//
// The child has one thread. A lock that another thread of the parent held would stay held in it for ever, so the locks
// of the services are held over the fork. And the threads that the OpenMP runtime believes to have are gone: a region
// of more than one thread would wait for them, so the child of a process with several threads has a budget of 1.
#pragma once

namespace qrv {

// Whether this process, or one that it descends from by forks, was forked from a process with several threads.
bool threads_lost_in_fork();

} // namespace qrv
