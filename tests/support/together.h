// Threads that begin their work at the same moment.
#ifndef TESTS_SUPPORT_TOGETHER_H
#define TESTS_SUPPORT_TOGETHER_H

#include <barrier>
#include <functional>
#include <thread>
#include <vector>

// Does each piece of work in a thread of its own, all behind one barrier, and waits for their ends.
inline void do_together(const std::vector<std::function<void()>> &work) {
  std::barrier start(static_cast<std::ptrdiff_t>(work.size()));
  std::vector<std::thread> threads;
  for (const std::function<void()> &piece : work) {
    threads.emplace_back([&start, &piece] {
      start.arrive_and_wait();
      piece();
    });
  }
  for (std::thread &thread : threads)
    thread.join();
}

// The same work in so many threads; each is given its number.
inline void do_together(int count, const std::function<void(int)> &piece) {
  std::vector<std::function<void()>> work;
  for (int number = 0; number < count; ++number)
    work.emplace_back([&piece, number] { piece(number); });
  do_together(work);
}

#endif
