// Room for a text that is short as a rule.
#ifndef QXPORT_FRAME_SHORT_BUFFER_H
#define QXPORT_FRAME_SHORT_BUFFER_H

#include <cstddef>
#include <cstdlib>

namespace qxport {

// `size` bytes, from the heap only where they are more than ROOM.
template <size_t ROOM>
class ShortBuffer {
public:
  explicit ShortBuffer(size_t size) : bytes_(size <= ROOM ? room_ : static_cast<char *>(malloc(size))) {}
  ~ShortBuffer() {
    if (bytes_ != room_)
      free(bytes_);
  }
  ShortBuffer(const ShortBuffer &) = delete;
  ShortBuffer &operator=(const ShortBuffer &) = delete;

  // Null where memory ran out.
  char *get() const { return bytes_; }

private:
  char room_[ROOM];
  char *bytes_;
};

}  // namespace qxport

#endif
