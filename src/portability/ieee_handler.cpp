// IEEE_HANDLER: Fortran procedures for the floating-point exceptions that trap.
#include "contract/fp_units.h"
#include "contract/services.h"
#include "frame/strings.h"
#include "portability/trap_context.h"

#include <csignal>
#include <iterator>
#include <unistd.h>

using namespace qxport;

const int32_t valFPE_INVALID = 129;
const int32_t valFPE_ZERODIVIDE = 131;
const int32_t valFPE_OVERFLOW = 132;
const int32_t valFPE_UNDERFLOW = 133;
const int32_t valFPE_INEXACT = 134;

namespace {

using Procedure = void (*)();
using Handler = void (*)(int32_t *number, int32_t *code);

constexpr int32_t NOT_DONE = 1;
constexpr int32_t HANDLED_STATUS = 9;
constexpr int32_t UNKNOWN_STATUS = 1;

// Written by IEEE_HANDLER, read where the signal arrives, by whichever thread.
Procedure invalid_handler, zerodivide_handler, overflow_handler, underflow_handler, inexact_handler;

struct Trap {
  const char *word;
  uint32_t exception;
  Procedure *handler;
};

// "all" and "common" stand for the first five and the first four.
constexpr Trap TRAPS[] = {
    {"division", FP_ZERO_DIVIDE, &zerodivide_handler}, {"underflow", FP_UNDERFLOW, &underflow_handler},
    {"overflow", FP_OVERFLOW, &overflow_handler},      {"invalid", FP_INVALID, &invalid_handler},
    {"inexact", FP_INEXACT, &inexact_handler},
};

// What an exception's word names.
struct Named {
  const Trap *first;
  size_t count;
  uint32_t exceptions;  // of the control word
};

constexpr Named NOTHING = {nullptr, 0, 0};

void lower_case(char *text) {
  for (; *text != '\0'; ++text)
    if (*text >= 'A' && *text <= 'Z')
      *text = static_cast<char>(*text + ('a' - 'A'));
}

// Only a whole word counts, although the words have the look of a list that is searched for a part.
Named named(const char *word) {
  for (const Trap &trap : TRAPS)
    if (strcmp(word, trap.word) == 0)
      return {&trap, 1, trap.exception};
  if (strcmp(word, "all") == 0)
    return {TRAPS, std::size(TRAPS), FP_ALL_EXCEPTIONS};
  if (strcmp(word, "common") == 0)
    return {TRAPS, std::size(TRAPS) - 1, FP_COMMON_EXCEPTIONS};
  return NOTHING;
}

// Makes the exceptions trap, or not, in the SSE register alone.
void unmask_sse(uint32_t exceptions) {
  set_sse_fields(0, static_cast<uint16_t>(unit_exceptions(exceptions & ~FP_DENORMAL)));
}
void mask_sse(uint32_t exceptions) {
  set_sse_fields(X87_MASKS, static_cast<uint16_t>(unit_exceptions(exceptions & ~FP_DENORMAL)));
}

[[noreturn]] void end(int32_t status) {
  for_exit(&status);
  _exit(status);  // a run-time of the program's own may come back
}

// What a code of the signal information calls.
struct Dispatch {
  int code;
  const Procedure *handler;
  const int32_t *exception;
};

const Dispatch DISPATCHES[] = {
    {FPE_FLTDIV, &zerodivide_handler, &valFPE_ZERODIVIDE},
    {FPE_INTDIV, &zerodivide_handler, &valFPE_ZERODIVIDE},
    {FPE_FLTOVF, &overflow_handler, &valFPE_OVERFLOW},
    {FPE_INTOVF, &overflow_handler, &valFPE_OVERFLOW},
    {FPE_FLTUND, &underflow_handler, &valFPE_UNDERFLOW},
    {FPE_FLTRES, &inexact_handler, &valFPE_INEXACT},
    {FPE_FLTINV, &invalid_handler, &valFPE_INVALID},
};

const Dispatch *dispatch_of(int code) {
  for (const Dispatch &dispatch : DISPATCHES)
    if (dispatch.code == code)
      return &dispatch;
  return nullptr;
}

// An exception as the processor numbers it, and the code that stands for it.
struct Cause {
  unsigned exception;
  int code;
};

// In the order of their rank.
constexpr Cause CAUSES[] = {
    {unit_exceptions(FP_ZERO_DIVIDE), FPE_FLTDIV}, {unit_exceptions(FP_OVERFLOW), FPE_FLTOVF},
    {unit_exceptions(FP_UNDERFLOW), FPE_FLTUND},   {unit_exceptions(FP_INEXACT), FPE_FLTRES},
    {unit_exceptions(FP_INVALID), FPE_FLTINV},
};

int code_of(unsigned exceptions) {
  for (const Cause &cause : CAUSES)
    if ((exceptions & cause.exception) != 0)
      return cause.code;
  return 0;
}

// The host's kernel tells the cause of a trap; a signal that was sent has none, and ends the process.
void general_handler(int number, siginfo_t *information, void *context) {
  if (information == nullptr)
    end(UNKNOWN_STATUS);
  TrapContext trap(context);
  if (information->si_code == 0)
    information->si_code = code_of(trap.due());
  const Dispatch *dispatch = dispatch_of(information->si_code);
  if (dispatch == nullptr)
    end(UNKNOWN_STATUS);
  AnyKind shown_number(number), shown_code(*dispatch->exception);
  // Read once: another thread may clear it.
  const auto procedure = reinterpret_cast<Handler>(*dispatch->handler);
  if (procedure != nullptr)
    procedure(shown_number, shown_code);
  if (information->si_code == 0) {
    // A procedure that has found the information and erased the cause asks for it to be cleared.
    const unsigned due = trap.due() & ~unit_exceptions(FP_DENORMAL);
    trap.clear(due & -due);
  }
  end(HANDLED_STATUS);
}

void install_general_handler() {
  struct sigaction action = {};
  action.sa_sigaction = general_handler;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  sigaction(SIGFPE, &action, nullptr);
}

intptr_t get(const Named &exception) {
  return exception.count == 1 ? reinterpret_cast<intptr_t>(*exception.first->handler) : NOT_DONE;
}

void store(const Named &exception, Procedure handler) {
  for (size_t i = 0; i < exception.count; ++i)
    *exception.first[i].handler = handler;
}

intptr_t set(const Named &exception, Procedure handler) {
  controlfp(0, exception.exceptions);
  unmask_sse(exception.exceptions);
  store(exception, handler);
  install_general_handler();
  return 0;
}

intptr_t clear(const Named &exception) {
  controlfp(FP_ALL_EXCEPTIONS, exception.exceptions);
  mask_sse(exception.exceptions);
  store(exception, nullptr);
  return 0;
}

enum class Action { Get, Set, Clear, None };

Action action_of(const char *word) {
  if (strcmp(word, "get") == 0)
    return Action::Get;
  if (strcmp(word, "set") == 0)
    return Action::Set;
  return strcmp(word, "clear") == 0 ? Action::Clear : Action::None;
}

// What the two keywords ask for.
struct Request {
  Action action;
  Named exception;
};

Request request_of(const char *action, const char *exception, charlen action_len, charlen exception_len) {
  const CString action_word(action, action_len);
  if (!action_word)
    return {Action::None, NOTHING};
  const CString exception_word(exception, exception_len);
  if (!exception_word)
    return {Action::None, NOTHING};
  lower_case(action_word.get());
  lower_case(exception_word.get());
  return {action_of(action_word.get()), named(exception_word.get())};
}

}  // namespace

// N = IEEE_HANDLER(ACTION, EXCEPTION, HANDLER)
intptr_t ieee_handler_(const char *action, const char *exception, void (*handler)(), charlen action_len,
                       charlen exception_len) {
  const Request request = request_of(action, exception, action_len, exception_len);
  if (request.exception.count == 0)
    return NOT_DONE;
  switch (request.action) {
  case Action::Get:
    return get(request.exception);
  case Action::Set:
    return set(request.exception, handler);
  case Action::Clear:
    return clear(request.exception);
  default:
    return NOT_DONE;
  }
}

void ieee_set_mxcsr(int32_t bits) {
  unmask_sse(static_cast<uint32_t>(bits));
}

void ieee_clear_mxcsr(int32_t bits) {
  mask_sse(static_cast<uint32_t>(bits));
}

QXPORT_ALIAS(ieee_handler_)
