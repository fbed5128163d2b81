// Terminals without a device.
#ifndef TESTS_SUPPORT_PSEUDO_TERMINAL_H
#define TESTS_SUPPORT_PSEUDO_TERMINAL_H

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

// A pseudo-terminal, its user's side open.
class PseudoTerminal {
public:
  PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
    EXPECT_GE(master_, 0);
    EXPECT_EQ(grantpt(master_), 0);
    EXPECT_EQ(unlockpt(master_), 0);
    name_ = ptsname(master_);
    descriptor_ = open(name_.c_str(), O_RDWR | O_NOCTTY);
    EXPECT_GE(descriptor_, 0) << name_;
  }
  ~PseudoTerminal() {
    close(descriptor_);
    close(master_);
  }
  PseudoTerminal(const PseudoTerminal &) = delete;
  PseudoTerminal &operator=(const PseudoTerminal &) = delete;

  const std::string &name() const { return name_; }
  int descriptor() const { return descriptor_; }
  int master() const { return master_; }

private:
  int master_;
  int descriptor_;
  std::string name_;
};

#endif
