/* The marks that load_syscalls looks for, made by mark(BEFORE_LOAD) and mark(AFTER_LOAD). */
#ifndef LOAD_MARKS_H
#define LOAD_MARKS_H

enum { BEFORE_LOAD = 0x5151, AFTER_LOAD = 0x5152 };

#define mark(number) ((void)syscall(number))

#endif
