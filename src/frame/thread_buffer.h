// One large read buffer for each thread that hashes.
//
// It lives in fiber-local storage: a thread_local with a destructor needs the runtime's own thread
// callbacks, and a library that is linked statically and has thread notifications off was seen to
// hang in them at thread exit.

#ifndef QUASTEL_FRAME_THREAD_BUFFER_H_
#define QUASTEL_FRAME_THREAD_BUFFER_H_

#include <cstddef>

namespace quastel {

inline constexpr std::size_t kThreadBufferSize = 1'048'576;

// The calling thread's buffer of kThreadBufferSize bytes, aligned to 32: made and zero-filled at
// the thread's first call, released when the thread ends. Null when there is no memory for it.
unsigned char* ThreadBuffer() noexcept;

// Releases every thread's buffer; for the moment when the library is unloaded.
void ReleaseThreadBuffers() noexcept;

}  // namespace quastel

#endif  // QUASTEL_FRAME_THREAD_BUFFER_H_
