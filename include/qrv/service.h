/* Public controls of the run-time services: reports, processor class, thread budget, work memory, and what
 * is running. All routines may be called from any thread unless a comment says otherwise.
 */

/* Example. At most two threads, and what is running:
 *
 *     char text[2000];
 *     qrv_serv_set_num_threads(2);
 *     return qrv_serv_get_configuration(text, sizeof text) < 2000 && text[0] == 'q';
 */
#ifndef QRV_SERVICE_H
#define QRV_SERVICE_H

#include <stddef.h>
#include <stdint.h>

#include "export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- What is running ------------------------------------------------------------------------------------ */

/* Version of the library, "major.minor.patch". The text lives as long as the library is loaded. */
QRV_API const char* qrv_serv_get_version(void);

/* Writes the running configuration as lines of text: version, processor class and why it was chosen, kernel
 * builds in use, caches, cores counted, thread budget and where it came from, work memory, OpenMP runtime.
 *
 * text, size  buffer and its size in bytes; at most size bytes are written, the terminating NUL included;
 *             text may be null if size is 0
 * Result: length of the whole text in bytes without the NUL, so that a second call can be given enough room.
 */
QRV_API int qrv_serv_get_configuration(char* text, int size);

/* ---- Reports and progress ------------------------------------------------------------------------------- */

/* Routine that receives a bad argument: name (not terminated), address of the position, length of the name. */
typedef void (*qrv_xerbla_routine)(const char* name, const int* info, int length);

/* Routine that is told how far a long factorization has come: thread number, columns or rows finished so far,
 * stage name (not terminated) and its length. It is called once a panel, on one of the threads at work. A result
 * other than 0 stops the factorization: the entry returns with its arrays as they stand, neither factored nor as
 * they were, and with info as far as it was found, which is 0 where nothing was wrong. Only the program, whose
 * routine asked for it, knows that the result is none. */
typedef int (*qrv_progress_routine)(const int* thread, const int* step, const char* stage, int length);

/* Set the routine that LAPACK entries install when they are called, and that is told of their progress from the
 * next call on; null for none. It serves all threads of the process. */
QRV_API void qrv_serv_set_default_progress(qrv_progress_routine routine);

/* Set the two slots that native code reports to while it runs; null goes back to the default report and to none.
 * Every LAPACK entry stores into both again, XERBLA and the routine set above, before it does anything else, and
 * BLAS entries look at neither: what is set here is never seen by a routine called afterwards. A program that wants
 * reports defines XERBLA, and one that wants progress sets the default. */
QRV_API void qrv_serv_set_xerbla(qrv_xerbla_routine routine);
QRV_API void qrv_serv_set_progress(qrv_progress_routine routine);

/* ---- Processor ------------------------------------------------------------------------------------------ */

/* Processor class: 5 SSE4.2, 4 SSSE3, 3 SSE3, 2 SSE2, 0 none of these. It selects the kernel builds. Decided
 * on first use; QRV_DEBUG_CPU_TYPE = 0, 2, 3, 4 or 5 forces it, without a test that the processor can run it. */
QRV_API int qrv_serv_get_cpu_type(void);

/* Finer class for tuning: 66 and 64 (class 5 with and without AES instructions), 33 and 32 (class 4 with and
 * without SSE4.1), else 0. QRV_DEBUG_CPU_MA = 64 or 66 forces it in class 5. */
QRV_API int qrv_serv_get_cpu_ma(void);

/* Class of the second-level cache by its descriptor: 0 none, 1 to 5 for 128 KB to 2 MB, 6 for 4 MB; -1 if the
 * processor names no known descriptor. */
QRV_API int qrv_serv_get_l2_class(void);

/* Size in bytes of a data or unified cache level counted from 1; level 0 asks for the last one. -1 if there is
 * no such level. */
QRV_API int qrv_serv_get_cache_size(int level);

/* Fills sizes[0] with the number of data and unified caches and sizes[1] to sizes[4] with the sizes in bytes
 * of the first four; words without a cache are left alone. Result: the number of caches. */
QRV_API int qrv_serv_get_cache_sizes(int* sizes);

/* ---- Threads -------------------------------------------------------------------------------------------- */

/* Domains of the thread budget. */
enum { QRV_DOMAIN_ALL = 0, QRV_DOMAIN_BLAS = 1, QRV_DOMAIN_FFT = 2, QRV_DOMAIN_VEC = 3 };

/* Upper bound of threads that a routine may use now: for everything, and for one QRV_DOMAIN_. The first query
 * reads the environment and counts cores, pinning the calling thread to each processor for a moment; others sleep
 * meanwhile, so a host with many threads asks once before it starts them. 1 in the child of a fork of several
 * threads. */
QRV_API int qrv_serv_get_max_threads(void);
QRV_API int qrv_serv_domain_get_max_threads(int domain);

/* Request n threads for everything. Stored only if n > 0. No request is taken beyond the OpenMP runtime's limit and
 * 1024. Result: n. */
QRV_API int qrv_serv_set_num_threads(int n);

/* Request n threads for one domain; 0 withdraws the request. Result: 1 if stored, 0 for n < 0 or an unknown
 * domain. */
QRV_API int qrv_serv_domain_set_num_threads(int n, int domain);

/* Dynamic adjustment: 1 (default) keeps the budget to the physical cores and to one thread inside a parallel
 * region; 0 takes the request as it is. */
QRV_API int qrv_serv_get_dynamic(void);
QRV_API void qrv_serv_set_dynamic(int flag);

/* Under a message-passing layer with dynamic adjustment on: 1 allows the full budget, any other value
 * restricts this process to one thread. */
QRV_API void qrv_serv_set_mpi_threaded(int flag);

/* 1 inside an active OpenMP parallel region, else 0. */
QRV_API int qrv_serv_in_parallel(void);

/* ---- Work memory ---------------------------------------------------------------------------------------- */

/* Each thread keeps up to five work buffers for reuse, of at most 40 MB each, and they stay when it ends, but for
 * libqrv_blas, where they are released then.
 *
 * qrv_serv_free_buffers releases those of all threads. No other call into the library may run meanwhile.
 * qrv_serv_free_thread_buffers releases those of the calling thread, at any time: the last thing a thread does that
 * will not call again. */
QRV_API void qrv_serv_free_buffers(void);
QRV_API void qrv_serv_free_thread_buffers(void);

/* Stores the number of buffers kept for reuse and gives the sum of their sizes in bytes; -1 and 0 if reuse is
 * switched off. */
QRV_API int64_t qrv_serv_memory_stat(int* buffers);

#ifdef __cplusplus
}
#endif

#endif
