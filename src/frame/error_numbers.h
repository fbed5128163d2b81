// The numbers by which the binding reports what no host call did. Some hosts use them for failures of rare
// facilities too.
#ifndef QXPORT_FRAME_ERROR_NUMBERS_H
#define QXPORT_FRAME_ERROR_NUMBERS_H

#include <cstdint>

namespace qxport {

constexpr int32_t EARRAYLEN = 125;
constexpr int32_t ENONAME = 126;
constexpr int32_t ENOHANDLE = 127;
constexpr int32_t ETRUNC = 129;
constexpr int32_t EEND = -1;

}  // namespace qxport

#endif
