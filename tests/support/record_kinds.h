// The kinds of record and their components as a program knows them, typed out apart from the library's own
// table; and what a record holds, read and written past all routines.
#ifndef TESTS_SUPPORT_RECORD_KINDS_H
#define TESTS_SUPPORT_RECORD_KINDS_H

#include "records/handles.h"

#include <qxport_records.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <ostream>
#include <string>
#include <vector>

enum class Form {
  Number32,
  Number64,
  Handler,  // 64 bits, of which an INTEGER(4) gets the low ones without a check
  Count,    // 32 bits, to be read only
  Array,    // 20 elements of 32 bits
  Text,     // held in the record
  String,   // owned
  Members,  // owned strings, to be read only
};

struct KnownComponent {
  std::string name;
  Form form;
  size_t capacity = 0;  // of a text
};

struct KnownKind {
  std::string name;
  uint32_t code;
  std::vector<KnownComponent> components;
};

inline std::ostream &operator<<(std::ostream &out, const KnownKind &kind) {
  return out << kind.name;
}

inline const std::vector<KnownKind> &known_kinds() {
  using enum Form;
  static const std::vector<KnownKind> kinds = {
      {"sigset", 1, {}},
      {"sigaction", 2, {{"sa_handler", Handler}, {"sa_mask", Number32}, {"sa_flags", Number32}}},
      {"utsname",
       3,
       {{"sysname", Text, 256},
        {"nodename", Text, 255},
        {"release", Text, 255},
        {"version", Text, 255},
        {"machine", Text, 255}}},
      {"tms",
       4,
       {{"tms_utime", Number64},
        {"tms_stime", Number64},
        {"tms_cutime", Number64},
        {"tms_cstime", Number64}}},
      {"dirent", 5, {{"d_name", Text, 255}}},
      {"stat",
       6,
       {{"st_mode", Number32},
        {"st_ino", Number64},
        {"st_dev", Number64},
        {"st_nlink", Number64},
        {"st_uid", Number32},
        {"st_gid", Number32},
        {"st_size", Number64},
        {"st_atime", Number64},
        {"st_mtime", Number64},
        {"st_ctime", Number64}}},
      {"utimbuf", 7, {{"actime", Number64}, {"modtime", Number64}}},
      {"flock",
       8,
       {{"l_type", Number32},
        {"l_whence", Number32},
        {"l_start", Number64},
        {"l_len", Number64},
        {"l_pid", Number32}}},
      {"termios",
       9,
       {{"c_iflag", Number32},
        {"c_oflag", Number32},
        {"c_cflag", Number32},
        {"c_lflag", Number32},
        {"c_cc", Array}}},
      {"group", 10, {{"gr_name", String}, {"gr_gid", Number32}, {"gr_nmem", Count}, {"gr_mem", Members}}},
      {"passwd",
       11,
       {{"pw_name", String},
        {"pw_uid", Number32},
        {"pw_gid", Number32},
        {"pw_dir", String},
        {"pw_shell", String}}},
  };
  return kinds;
}

inline void *address_of_record(int32_t handle) {
  return get_address_from_handle(handle, AllocatableHandles);
}

template <typename RecordType>
RecordType &record_as(int32_t handle) {
  return *static_cast<RecordType *>(address_of_record(handle));
}

// Shows the visitor each component of a record, in order, by name and place.
template <typename Visitor>
void visit_components(int32_t handle, Visitor &&visit) {
  using namespace qxport;
  switch (*static_cast<uint32_t *>(address_of_record(handle))) {
  case 1:
    return visit("(mask)", reinterpret_cast<int32_t &>(record_as<SigsetRecord>(handle).mask));
  case 2: {
    SigactionRecord &record = record_as<SigactionRecord>(handle);
    visit("sa_handler", record.sa_handler_);
    visit("sa_mask", record.sa_mask);
    return visit("sa_flags", record.sa_flags);
  }
  case 3: {
    UtsnameRecord &record = record_as<UtsnameRecord>(handle);
    visit("sysname", record.sysname);
    visit("nodename", record.nodename);
    visit("release", record.release);
    visit("version", record.version);
    return visit("machine", record.machine);
  }
  case 4: {
    TmsRecord &record = record_as<TmsRecord>(handle);
    visit("tms_utime", record.tms_utime);
    visit("tms_stime", record.tms_stime);
    visit("tms_cutime", record.tms_cutime);
    return visit("tms_cstime", record.tms_cstime);
  }
  case 5:
    return visit("d_name", record_as<DirentRecord>(handle).d_name);
  case 6: {
    StatRecord &record = record_as<StatRecord>(handle);
    visit("st_mode", record.st_mode);
    visit("st_ino", record.st_ino);
    visit("st_dev", record.st_dev);
    visit("st_nlink", record.st_nlink);
    visit("st_uid", record.st_uid);
    visit("st_gid", record.st_gid);
    visit("st_size", record.st_size);
    visit("st_atime", record.st_atime_);
    visit("st_mtime", record.st_mtime_);
    return visit("st_ctime", record.st_ctime_);
  }
  case 7: {
    UtimbufRecord &record = record_as<UtimbufRecord>(handle);
    visit("actime", record.actime);
    return visit("modtime", record.modtime);
  }
  case 8: {
    FlockRecord &record = record_as<FlockRecord>(handle);
    visit("l_type", record.l_type);
    visit("l_whence", record.l_whence);
    visit("l_start", record.l_start);
    visit("l_len", record.l_len);
    return visit("l_pid", record.l_pid);
  }
  case 9: {
    TermiosRecord &record = record_as<TermiosRecord>(handle);
    visit("c_iflag", record.c_iflag);
    visit("c_oflag", record.c_oflag);
    visit("c_cflag", record.c_cflag);
    visit("c_lflag", record.c_lflag);
    return visit("c_cc", record.c_cc);
  }
  case 10: {
    GroupRecord &record = record_as<GroupRecord>(handle);
    visit("gr_name", record.gr_name, record.gr_name_length);
    visit("gr_gid", record.gr_gid);
    visit("gr_nmem", record.gr_nmem);
    return visit("gr_mem", record.gr_mem, record.gr_nmem);
  }
  case 11: {
    PasswdRecord &record = record_as<PasswdRecord>(handle);
    visit("pw_name", record.pw_name, record.pw_name_length);
    visit("pw_uid", record.pw_uid);
    visit("pw_gid", record.pw_gid);
    visit("pw_dir", record.pw_dir, record.pw_dir_length);
    return visit("pw_shell", record.pw_shell, record.pw_shell_length);
  }
  }
}

// What each component holds, in words. A text's bytes behind its NUL count too.
using Contents = std::map<std::string, std::string>;

class ContentsReader {
public:
  explicit ContentsReader(Contents &contents) : contents_(contents) {}

  void operator()(const char *name, int32_t number) { contents_[name] = std::to_string(number); }
  void operator()(const char *name, int64_t number) { contents_[name] = std::to_string(number); }
  void operator()(const char *name, const char (&text)[256]) { contents_[name] = std::string(text, 256); }
  void operator()(const char *name, const int32_t (&elements)[20]) {
    for (const int32_t element : elements)
      contents_[name] += std::to_string(element) + ' ';
  }
  void operator()(const char *name, const char *string, size_t length) {
    contents_[name] = string == nullptr ? "(none)" : std::string(string, length);
  }
  void operator()(const char *name, char *const *members, int32_t count) {
    contents_[name] = members == nullptr ? "(none)" : "";
    for (int32_t i = 0; members != nullptr && i < count; ++i)
      contents_[name] += members[i] == nullptr ? "(none);" : std::string(members[i]) + ';';
  }

private:
  Contents &contents_;
};

inline Contents contents_of(int32_t handle) {
  Contents contents;
  visit_components(handle, ContentsReader(contents));
  return contents;
}

// A text as the record holds it.
inline std::string held(std::string text) {
  text.resize(256, '\0');
  return text;
}

inline char *allocated(const std::string &text) {
  char *copy = static_cast<char *>(malloc(text.size() + 1));
  memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

// As the user database's strings are kept: without a NUL, in a block that ends with them.
inline char *allocated_without_nul(const std::string &text) {
  char *copy = static_cast<char *>(malloc(text.size()));
  if (!text.empty())
    memcpy(copy, text.data(), text.size());
  return copy;
}

inline void set_members(qxport::GroupRecord &record, const std::vector<std::string> &members) {
  record.gr_nmem = static_cast<int32_t>(members.size());
  record.gr_mem = static_cast<char **>(calloc(members.size() + 1, sizeof(char *)));
  for (size_t i = 0; i < members.size(); ++i)
    record.gr_mem[i] = allocated(members[i]);
}

// Gives every component of a fresh record a value of its own that an INTEGER(4) holds.
class Filler {
public:
  explicit Filler(int32_t seed) : last_(seed) {}

  void operator()(const char *, int32_t &number) { number = next(); }
  void operator()(const char *, int64_t &number) { number = next(); }
  void operator()(const char *name, char (&text)[256]) { strcpy(text, text_for(name).c_str()); }
  void operator()(const char *, int32_t (&elements)[20]) {
    for (int32_t &element : elements)
      element = next();
  }
  void operator()(const char *name, char *&string, size_t &length) {
    const std::string text = text_for(name);
    string = strncmp(name, "pw_", 3) == 0 ? allocated_without_nul(text) : allocated(text);
    length = text.size();
  }
  void operator()(const char *, char **&members, int32_t &count) {
    count = 3;
    members = static_cast<char **>(calloc(3, sizeof(char *)));
    members[0] = allocated(text_for("member"));
    members[1] = allocated("");
    members[2] = allocated("last");
  }

private:
  // Of both signs.
  int32_t next() {
    last_ = (last_ < 0 ? -last_ : last_) + 1000001;
    if (last_ % 2 == 0)
      last_ = -last_;
    return last_;
  }
  std::string text_for(const char *name) { return "old " + std::string(name) + std::to_string(next()); }

  int32_t last_;
};

inline void fill_record(int32_t handle, int32_t seed = 77) {
  visit_components(handle, Filler(seed));
}

#endif
