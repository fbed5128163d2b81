"""Names that a C or C++ translation unit cannot use for an argument or a component."""

_C = """auto break case char const continue default do double else enum extern float for goto if inline int long
register restrict return short signed sizeof static struct switch typedef union unsigned void volatile while"""
_CXX = """alignas alignof and and_eq asm bitand bitor bool catch char8_t char16_t char32_t class co_await co_return
co_yield compl concept consteval constexpr constinit const_cast decltype delete dynamic_cast explicit export false
friend mutable namespace new noexcept not not_eq nullptr operator or or_eq private protected public
reinterpret_cast requires static_assert static_cast template this thread_local throw true try typeid typename
using virtual wchar_t xor xor_eq main"""
# Macros of the compilers' GNU dialects and of common host headers that stand for an object.
_MACROS = """linux unix i386 vax errno stdin stdout stderr complex imaginary noreturn
st_atime st_mtime st_ctime sa_handler sa_sigaction si_pid si_uid si_status si_utime si_stime si_value si_int si_ptr
si_addr si_band si_fd sigev_notify_function sigev_notify_attributes sv_onstack
h_addr s6_addr d_fileno assert offsetof typeof"""

UNSAFE = frozenset((_C + " " + _CXX + " " + _MACROS).split())


def safe(name, taken=()):
    """`name`, with underscores appended until C and C++ take it and it is not among `taken`."""
    while name in UNSAFE or name in taken:
        name += "_"
    return name
