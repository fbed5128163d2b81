// The binding's constants by group, each with the value that this host's headers give it, or with the
// binding's own. Typed out apart from the library's list.
#ifndef TESTS_SUPPORT_CONSTANT_NAMES_H
#define TESTS_SUPPORT_CONSTANT_NAMES_H

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <ostream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

struct HostConstant {
  const char *name;
  int32_t value;
};

struct ConstantGroup {
  std::string name;
  size_t size;
  std::vector<HostConstant> constants;
};

inline std::ostream &operator<<(std::ostream &out, const ConstantGroup &group) {
  return out << group.name;
}

// A name that this host lacks is -1.
#ifdef SIGEMT
constexpr int32_t HOST_SIGEMT = SIGEMT;
#else
constexpr int32_t HOST_SIGEMT = -1;
#endif
#ifdef SIGINFO
constexpr int32_t HOST_SIGINFO = SIGINFO;
#else
constexpr int32_t HOST_SIGINFO = -1;
#endif

// The name is taken as it is written, the value as the host's headers have it, its low 32 bits.
// clang-format off
#define HOST(name) {#name, static_cast<int32_t>(name)}
#define DISPOSITION(name) {#name, static_cast<int32_t>(reinterpret_cast<intptr_t>(name))}

inline const std::vector<ConstantGroup> &constant_groups() {
  static const std::vector<ConstantGroup> groups = {
    {"Signals", 32, {
      HOST(SIGHUP), HOST(SIGQUIT), HOST(SIGTRAP), HOST(SIGIOT), {"SIGEMT", HOST_SIGEMT}, HOST(SIGKILL),
      HOST(SIGBUS), HOST(SIGSYS), HOST(SIGPIPE), HOST(SIGALRM), HOST(SIGURG), HOST(SIGSTOP), HOST(SIGTSTP),
      HOST(SIGCONT), HOST(SIGCHLD), HOST(SIGTTIN), HOST(SIGTTOU), HOST(SIGIO), HOST(SIGXCPU), HOST(SIGXFSZ),
      HOST(SIGVTALRM), HOST(SIGPROF), HOST(SIGWINCH), {"SIGINFO", HOST_SIGINFO}, HOST(SIGUSR1),
      HOST(SIGUSR2), HOST(SIGINT), HOST(SIGILL), HOST(SIGFPE), HOST(SIGSEGV), HOST(SIGTERM), HOST(SIGABRT)}},
    {"ActionFlags", 4, {HOST(SA_NODEFER), HOST(SA_NOCLDSTOP), HOST(SA_RESETHAND), HOST(SA_RESTART)}},
    {"MaskOperations", 3, {HOST(SIG_UNBLOCK), HOST(SIG_SETMASK), HOST(SIG_BLOCK)}},
    {"SignalCount", 1, {{"NSIG", 32}}},
    {"NameLengths", 2, {{"SYS_NMLN", 256}, {"_SYS_NAMELEN", 256}}},
    {"Sysconf", 25, {
      HOST(_SC_ARG_MAX), HOST(_SC_CHILD_MAX), HOST(_SC_CLK_TCK), HOST(_SC_STREAM_MAX), HOST(_SC_TZNAME_MAX),
      HOST(_SC_OPEN_MAX), HOST(_SC_JOB_CONTROL), HOST(_SC_SAVED_IDS), HOST(_SC_VERSION),
      HOST(_SC_BC_BASE_MAX), HOST(_SC_BC_DIM_MAX), HOST(_SC_BC_SCALE_MAX), HOST(_SC_BC_STRING_MAX),
      HOST(_SC_COLL_WEIGHTS_MAX), HOST(_SC_EXPR_NEST_MAX), HOST(_SC_LINE_MAX), HOST(_SC_RE_DUP_MAX),
      HOST(_SC_2_VERSION), HOST(_SC_2_C_DEV), HOST(_SC_2_FORT_DEV), HOST(_SC_2_FORT_RUN),
      HOST(_SC_2_LOCALEDEF), HOST(_SC_2_SW_DEV), HOST(_SC_PAGESIZE), HOST(_SC_PAGE_SIZE)}},
    {"OpenFlags", 12, {
      HOST(O_RDONLY), HOST(O_WRONLY), HOST(O_RDWR), HOST(O_CREAT), HOST(O_EXCL), HOST(O_NOCTTY),
      HOST(O_TRUNC), HOST(O_APPEND), HOST(O_NONBLOCK), HOST(O_NDELAY), HOST(O_SYNC), HOST(O_NOFOLLOW)}},
    {"FileModes", 26, {
      HOST(S_IRWXU), HOST(S_IREAD), HOST(S_IRUSR), HOST(S_IWUSR), HOST(S_IWRITE), HOST(S_IXUSR),
      HOST(S_IEXEC), HOST(S_IRWXG), HOST(S_IRGRP), HOST(S_IWGRP), HOST(S_IXGRP), HOST(S_IRWXO),
      HOST(S_IROTH), HOST(S_IWOTH), HOST(S_IXOTH), HOST(S_IFMT), HOST(S_IFSOCK), HOST(S_IFLNK),
      HOST(S_IFREG), HOST(S_IFBLK), HOST(S_IFDIR), HOST(S_IFCHR), HOST(S_IFIFO), HOST(S_ISUID),
      HOST(S_ISGID), HOST(S_ISVTX)}},
    {"AccessModes", 4, {HOST(R_OK), HOST(W_OK), HOST(X_OK), HOST(F_OK)}},
    {"Pathconf", 9, {
      HOST(_PC_LINK_MAX), HOST(_PC_MAX_CANON), HOST(_PC_MAX_INPUT), HOST(_PC_NAME_MAX), HOST(_PC_PATH_MAX),
      HOST(_PC_PIPE_BUF), HOST(_PC_CHOWN_RESTRICTED), HOST(_PC_NO_TRUNC), HOST(_PC_VDISABLE)}},
    {"FileControl", 10, {
      HOST(F_DUPFD), HOST(F_GETFD), HOST(F_SETFD), HOST(F_GETFL), HOST(F_SETFL), HOST(F_GETLK),
      HOST(F_SETLK), HOST(F_SETLKW), HOST(F_GETOWN), HOST(F_SETOWN)}},
    {"Terminal", 63, {
      {"NCCS", 20}, HOST(IGNBRK), HOST(BRKINT), HOST(IGNPAR), HOST(PARMRK), HOST(INPCK), HOST(ISTRIP),
      HOST(INLCR), HOST(IGNCR), HOST(ICRNL), HOST(IXON), HOST(IXANY), HOST(IXOFF), HOST(IMAXBEL),
      HOST(OPOST), HOST(ONLCR), HOST(OCRNL), HOST(ONOCR), HOST(ONLRET), HOST(OFILL), HOST(OFDEL),
      HOST(NLDLY), HOST(CRDLY), HOST(TABDLY), HOST(TAB0), HOST(TAB1), HOST(TAB2), HOST(TAB3), HOST(BSDLY),
      HOST(BS0), HOST(BS1), HOST(VTDLY), HOST(VT0), HOST(VT1), HOST(FFDLY), HOST(FF0), HOST(FF1),
      HOST(CSIZE), HOST(CS5), HOST(CS6), HOST(CS7), HOST(CS8), HOST(CSTOPB), HOST(CREAD), HOST(PARENB),
      HOST(PARODD), HOST(HUPCL), HOST(CLOCAL), HOST(CRTSCTS), HOST(ISIG), HOST(ICANON), HOST(ECHO),
      HOST(ECHOE), HOST(ECHOK), HOST(ECHONL), HOST(ECHOCTL), HOST(ECHOPRT), HOST(ECHOKE), HOST(FLUSHO),
      HOST(NOFLSH), HOST(TOSTOP), HOST(PENDIN), HOST(IEXTEN)}},
    {"LineSpeeds", 19, {
      HOST(B0), HOST(B50), HOST(B75), HOST(B110), HOST(B134), HOST(B150), HOST(B200), HOST(B300), HOST(B600),
      HOST(B1200), HOST(B1800), HOST(B2400), HOST(B4800), HOST(B9600), HOST(B19200), HOST(B38400),
      HOST(B57600), HOST(B115200), HOST(B230400)}},
    {"WaitOptions", 2, {HOST(WNOHANG), HOST(WUNTRACED)}},
    {"Dispositions", 3, {DISPOSITION(SIG_DFL), DISPOSITION(SIG_IGN), DISPOSITION(SIG_ERR)}},
    {"SeekOrigins", 3, {HOST(SEEK_SET), HOST(SEEK_CUR), HOST(SEEK_END)}},
    {"StandardUnits", 6, {
      {"STDIN_UNIT", 5}, {"STDOUT_UNIT", 6}, {"STDERR_UNIT", 0}, HOST(STDIN_FILENO), HOST(STDOUT_FILENO),
      HOST(STDERR_FILENO)}},
    {"BindingErrors", 5, {
      {"ENONAME", 126}, {"ENOHANDLE", 127}, {"ETRUNC", 129}, {"EARRAYLEN", 125}, {"EEND", -1}}},
    {"SystemErrors", 39, {
      HOST(EIO), HOST(ENXIO), HOST(E2BIG), HOST(ENOEXEC), HOST(EBADF), HOST(ECHILD), HOST(EPERM),
      HOST(EAGAIN), HOST(ENOMEM), HOST(EACCES), HOST(EFAULT), HOST(EBUSY), HOST(EEXIST), HOST(EXDEV),
      HOST(ENODEV), HOST(ENOTDIR), HOST(EISDIR), HOST(EINVAL), HOST(EMFILE), HOST(ENFILE), HOST(ENOTTY),
      HOST(ENOENT), HOST(EFBIG), HOST(ENOSPC), HOST(ESPIPE), HOST(EROFS), HOST(EMLINK), HOST(EPIPE),
      HOST(EDOM), HOST(ERANGE), HOST(EDEADLOCK), HOST(EDEADLK), HOST(ENAMETOOLONG), HOST(ENOLCK),
      HOST(ESRCH), HOST(EINTR), HOST(ENOSYS), HOST(ENOTEMPTY), HOST(EILSEQ)}},
  };
  return groups;
}
// clang-format on

#undef HOST
#undef DISPOSITION

#endif
