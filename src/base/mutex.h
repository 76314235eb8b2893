// A mutex that tells clang's thread-safety analysis what it guards.

#ifndef QUASTEL_BASE_MUTEX_H_
#define QUASTEL_BASE_MUTEX_H_

#include <mutex>

#if defined(__clang__)
#define QS_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define QS_THREAD_ANNOTATION(x)
#endif

#define QS_CAPABILITY(name) QS_THREAD_ANNOTATION(capability(name))
#define QS_SCOPED_CAPABILITY QS_THREAD_ANNOTATION(scoped_lockable)
#define QS_GUARDED_BY(mutex) QS_THREAD_ANNOTATION(guarded_by(mutex))
#define QS_REQUIRES(...) QS_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define QS_EXCLUDES(...) QS_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define QS_ACQUIRE(...) QS_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define QS_RELEASE(...) QS_THREAD_ANNOTATION(release_capability(__VA_ARGS__))

namespace quastel {

class QS_CAPABILITY("mutex") Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void Lock() QS_ACQUIRE() { mutex_.lock(); }
  void Unlock() QS_RELEASE() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

class QS_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) QS_ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
  ~MutexLock() QS_RELEASE() { mutex_.Unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace quastel

#endif  // QUASTEL_BASE_MUTEX_H_
