// Environments of a test's own.
#ifndef TESTS_SUPPORT_ENVIRONMENT_H
#define TESTS_SUPPORT_ENVIRONMENT_H

#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

// The process's environment while one is alive: these entries in this order, of whatever form.
class Environment {
public:
  explicit Environment(std::vector<std::string> entries) : former_(environ) { set(std::move(entries)); }
  ~Environment() { environ = former_; }
  Environment(const Environment &) = delete;
  Environment &operator=(const Environment &) = delete;

  void set(std::vector<std::string> entries) {
    entries_ = std::move(entries);
    pointers_.clear();
    for (std::string &entry : entries_)
      pointers_.push_back(entry.data());
    pointers_.push_back(nullptr);
    environ = pointers_.data();
  }

private:
  char **former_;
  std::vector<std::string> entries_;
  std::vector<char *> pointers_;
};

// No list at all, as clearenv leaves it.
class NoEnvironment {
public:
  NoEnvironment() : former_(std::exchange(environ, nullptr)) {}
  ~NoEnvironment() { environ = former_; }
  NoEnvironment(const NoEnvironment &) = delete;
  NoEnvironment &operator=(const NoEnvironment &) = delete;

private:
  char **former_;
};

#endif
