// What the host saves of the processor for the handler of a floating-point trap.
#ifndef QXPORT_PORTABILITY_TRAP_CONTEXT_H
#define QXPORT_PORTABILITY_TRAP_CONTEXT_H

#include "contract/fp_units.h"

#include <cstring>
#include <ucontext.h>

namespace qxport {

class TrapContext {
public:
  // The third argument of a handler; may be null.
  explicit TrapContext(void *context) {
    if (context == nullptr)
      return;
    const mcontext_t &machine = static_cast<ucontext_t *>(context)->uc_mcontext;
    trap_ = static_cast<long>(machine.gregs[REG_TRAPNO]);
    units_ = machine.fpregs;
  }

  // The exceptions, numbered as the processor does, that are raised and not masked in the unit that trapped.
  // None for a trap of another kind, and for a signal that was sent.
  unsigned due() const {
    if (units_ == nullptr)
      return 0;
    if (trap_ == X87_TRAP)
      return x87_status() & ~x87_control() & UNIT_EXCEPTIONS;
    if (trap_ == SSE_TRAP)
      return sse() & ~(sse() >> SSE_MASKS_SHIFT) & UNIT_EXCEPTIONS;
    return 0;
  }

  // Lowers flags of the unit that trapped.
  void clear(unsigned exceptions) {
    if (units_ == nullptr)
      return;
    if (trap_ == X87_TRAP)
      set_x87_status(x87_status() & ~exceptions);
    if (trap_ == SSE_TRAP)
      set_sse(sse() & ~exceptions);
  }

private:
  static constexpr long X87_TRAP = 16;
  static constexpr long SSE_TRAP = 19;

#ifdef __x86_64__
  unsigned x87_control() const {
    return units_->cwd;
  }
  unsigned x87_status() const {
    return units_->swd;
  }
  void set_x87_status(unsigned status) {
    units_->swd = static_cast<uint16_t>(status);
  }
  uint32_t sse() const {
    return units_->mxcsr;
  }
  void set_sse(uint32_t word) {
    units_->mxcsr = word;
  }
#else
  // The C library's structure ends before the part that the SSE unit came with. All processors that this
  // library runs on have that unit, so the part is there.
  static constexpr size_t SSE_OFFSET = sizeof(_libc_fpstate) + 6 * sizeof(uint32_t);

  unsigned x87_control() const {
    return static_cast<unsigned>(units_->cw);
  }
  unsigned x87_status() const {
    return static_cast<unsigned>(units_->sw);
  }
  void set_x87_status(unsigned status) {
    units_->sw = status;
  }
  uint32_t sse() const {
    uint32_t word;
    memcpy(&word, reinterpret_cast<const char *>(units_) + SSE_OFFSET, sizeof(word));
    return word;
  }
  void set_sse(uint32_t word) {
    memcpy(reinterpret_cast<char *>(units_) + SSE_OFFSET, &word, sizeof(word));
  }
#endif

  long trap_ = -1;
  fpregset_t units_ = nullptr;
};

}  // namespace qxport

#endif
