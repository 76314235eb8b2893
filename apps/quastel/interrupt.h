#ifndef QUASTEL_APPS_QUASTEL_INTERRUPT_H_
#define QUASTEL_APPS_QUASTEL_INTERRUPT_H_

namespace quastel::client {

// While one of these lives, the first Ctrl-C or Ctrl-Break asks the work to stop, and a second one
// ends the process as it would without us.
class InterruptGuard {
 public:
  InterruptGuard();
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

  bool Requested() const;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_INTERRUPT_H_
