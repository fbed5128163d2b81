// A tree of directories, files and links, as the tests of path resolution use it.
#ifndef TESTS_SUPPORT_PATH_TREE_H
#define TESTS_SUPPORT_PATH_TREE_H

#include "compat/path_resolution.h"
#include "recorder.h"

#include <cstdlib>
#include <filesystem>
#include <string>

// Nothing is there, on any machine.
constexpr char NO_SUCH[] = "/qxport-no-such";

// The host's own answer, or nothing.
inline std::string real_path(const std::string &name) {
  char *found = realpath(name.c_str(), nullptr);
  const std::string path = found == nullptr ? "" : found;
  free(found);
  return path;
}

inline std::string replaced(std::string text, const std::string &what, const std::string &by) {
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
    text.replace(at, what.size(), by);
  return text;
}

class PathTree {
public:
  PathTree() {
    for (const char *name : {"dir/sub/deep", "dir/.hid", "other", "a b"})
      std::filesystem::create_directories(path_ + "/" + name);
    for (const char *name : {"file", "dir/file.f90", "dir/.profile", "dir/sub/x", "a b/c d"})
      parent_.file(std::string("tree/") + name);
    const std::pair<const char *, std::string> links[] = {
        {"link", "dir"},         {"link_file", "file"},
        {"dangling", "nowhere"}, {"far", "nowhere/further"},
        {"one", "two"},          {"two", "one"},
        {"self", "self"},        {"absolute", path_ + "/dir/sub"},
        {"dir/up", ".."},        {"root", "/"},
        {"chain", "link"},       {"dir/sub/back", "../../other"},
        {"slashed", "dir/"},     {"dots", "dir/./sub/.."},
    };
    for (const auto &[name, target] : links)
      std::filesystem::create_symlink(target, path_ + "/" + name);
  }

  const std::string &path() const { return path_; }
  std::string operator/(const std::string &name) const { return path_ + "/" + name; }

  // The text of a case, with its stand-ins replaced.
  std::string filled_in(const char *text) const {
    return replaced(replaced(replaced(text, "@", path_), "^", parent_path_), "~", NO_SUCH);
  }

private:
  TemporaryDirectory parent_;
  std::string parent_path_ = real_path(parent_.path());
  std::string path_ = parent_path_ + "/tree";
};

// What the resolver answers, in a buffer of exactly the size that it may use.
inline std::string resolved(const std::string &name) {
  Character buffer(qxport::RESOLVED_LIMIT + 1);
  __qxport_resolve_unix_path(name.c_str(), buffer.data());
  const std::string text = buffer.text();
  const size_t end = text.find('\0');
  EXPECT_NE(end, std::string::npos) << "not terminated";
  return text.substr(0, end);
}

#endif
