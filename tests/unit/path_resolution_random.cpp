// The path resolver beside the host's own on random trees of links, and beside a plain model of its steps on
// names that are missing.
#include "path_tree.h"

#include <random>

namespace {

std::mt19937 generator(19930419);

size_t below(size_t count) {
  return generator() % count;
}

template <typename List>
auto &one_of(List &list) {
  return list[below(std::size(list))];
}

// Directories, with links to directories and files in each, relative and absolute, up and down.
class RandomTree {
public:
  RandomTree() : root_(real_path(directory_.path())), directories_{root_} {
    for (int i = 0; i < 40; ++i) {
      const std::string name = one_of(directories_) + "/d" + std::to_string(i);
      if (name.size() < 700 && std::filesystem::create_directory(name))
        directories_.push_back(name);
    }
    for (int i = 0; i < 60; ++i) {
      const std::string place = one_of(directories_), target = one_of(directories_);
      const std::string link = place + "/l" + std::to_string(i);
      const std::string relative = std::filesystem::path(target).lexically_relative(place).string();
      std::filesystem::create_symlink(below(2) == 0 ? target : relative, link);
    }
  }
  const std::string &root() const { return root_; }
  const std::string &a_directory() const { return directories_[below(directories_.size())]; }

  // A way through what exists, of random turns; relative to the current directory or absolute.
  std::string way(const std::string &current) const {
    const bool absolute = below(2) == 0;
    std::string name = absolute ? a_directory() : ".", real = absolute ? name : current;
    for (size_t turns = below(12); turns > 0; --turns) {
      std::vector<std::string> choices = {".", "..", ""};
      for (const auto &entry : std::filesystem::directory_iterator(real))
        choices.push_back(entry.path().filename().string());
      const std::string &choice = one_of(choices);
      if (choice == ".." && real.size() <= root_.size())
        continue;
      name += "/" + choice;
      real = real_path(real + "/" + choice);
    }
    return below(4) == 0 ? name + "/" : name;
  }

private:
  const TemporaryDirectory directory_;
  std::string root_;
  std::vector<std::string> directories_;
};

TEST(RandomPaths, AreTheHostsOwnWhereAllExists) {
  for (int trees = 0; trees < 5; ++trees) {
    const RandomTree tree;
    for (int places = 0; places < 4; ++places) {
      const std::string current = tree.a_directory();
      const WorkingDirectory inside(current);
      for (int i = 0; i < 60; ++i) {
        const std::string name = tree.way(current), real = real_path(name);
        ASSERT_NE(real, "") << name;
        EXPECT_EQ(resolved(name), name.back() == '/' && real != "/" ? real + "/" : real) << name;
      }
    }
  }
}

// From the first prefix on, as far as there is one that exists.
std::string with_existing_prefix(const std::string &in) {
  size_t end = in.find('/', 1);
  std::string prefix = real_path(in.substr(0, end));
  if (prefix.empty())
    return in[0] == '/' ? in : real_path(".") + "/" + in;
  for (;;) {
    const size_t next = in.find('/', end + 1);
    if (end == in.size() - 1 || next == std::string::npos)
      break;
    const std::string longer = real_path(in.substr(0, next));
    if (longer.empty())
      break;
    prefix = longer;
    end = next;
  }
  return prefix == "/" ? prefix + in.substr(end + 1) : prefix + in.substr(end);
}

std::string normalised(std::string path) {
  for (size_t from = 0;;) {
    const size_t dot = path.find("/.", from);
    if (dot == std::string::npos)
      return path;
    const std::string behind = path.substr(dot + 2), ahead = path.substr(0, dot);
    const size_t parent = ahead.rfind('/');
    if (behind.empty())
      return ahead;
    if (behind[0] == '/') {
      path = ahead + behind;
      from = dot;
    } else if (behind == "." || behind.starts_with("./")) {
      if (parent == std::string::npos)
        return "/";
      if (behind == ".")
        return parent == 0 ? ahead : ahead.substr(0, parent);
      path = ahead.substr(0, parent + 1) + behind.substr(2);
      from = parent;
    } else {
      from = dot + 2;
    }
  }
}

std::string by_model(const std::string &in) {
  if (const std::string real = real_path(in); !real.empty())
    return in.back() == '/' && real != "/" ? real + "/" : real;
  if (in.find('/') == std::string::npos)
    return normalised(real_path(".") + "/" + in);
  return in[0] == '/' && in.find('/', 1) == std::string::npos ? in : normalised(with_existing_prefix(in));
}

TEST(RandomPaths, AreTheModelsWhereSomethingIsMissing) {
  const char *const pieces[] = {"x", ".", "..", "...", ".x", "..x", "x.", "", "file"};
  int missing = 0;
  for (int trees = 0; trees < 5; ++trees) {
    const RandomTree tree;
    for (int places = 0; places < 4; ++places) {
      const std::string current = tree.a_directory();
      const WorkingDirectory inside(current);
      for (int i = 0; i < 100; ++i) {
        std::string name = below(8) == 0 ? std::string(NO_SUCH) : tree.way(current);
        for (size_t more = below(6); more > 0; --more)
          name += std::string("/") + one_of(pieces);
        missing += real_path(name).empty();
        EXPECT_EQ(resolved(name), by_model(name)) << name;
      }
    }
  }
  EXPECT_GT(missing, 400);
}

}  // namespace
