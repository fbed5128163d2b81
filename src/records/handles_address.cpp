// Handles on targets of 32-bit addresses: the address itself. Which addresses are handles is kept beside, so
// that a stale or foreign number is refused and not followed.
#include "records/handles.h"

#include <algorithm>
#include <cstdlib>

using namespace qxport;

namespace {

// A set of addresses: open addressing with linear probing, at most half full.
class AddressSet {
public:
  bool contains(uintptr_t address) const {
    return address != 0 && capacity_ != 0 && *place_of(address) == address;
  }

  // False when memory ran out.
  bool insert(uintptr_t address) {
    if (contains(address))
      return true;
    if (count_ * 2 >= capacity_ && !grow())
      return false;
    *place_of(address) = address;
    ++count_;
    return true;
  }

  // Closes the gap, so that no mark of a removed address is needed.
  void remove(uintptr_t address) {
    uint32_t gap = static_cast<uint32_t>(place_of(address) - places_);
    places_[gap] = 0;
    --count_;
    for (uint32_t next = following(gap); places_[next] != 0; next = following(next)) {
      const uint32_t wanted = first_place(places_[next]);
      if (((next - wanted) & (capacity_ - 1)) >= ((next - gap) & (capacity_ - 1))) {
        places_[gap] = places_[next];
        places_[next] = 0;
        gap = next;
      }
    }
  }

  void clear() {
    free(places_);
    places_ = nullptr;
    capacity_ = 0;
    count_ = 0;
  }

private:
  static constexpr uint32_t LEAST_CAPACITY = 64;

  uint32_t first_place(uintptr_t address) const {
    return ((static_cast<uint32_t>(address) * 2654435769U) >> 7) & (capacity_ - 1);
  }
  uint32_t following(uint32_t place) const { return (place + 1) & (capacity_ - 1); }

  // Where the address stands, or the free place where it would.
  uintptr_t *place_of(uintptr_t address) const {
    uint32_t place = first_place(address);
    while (places_[place] != 0 && places_[place] != address)
      place = following(place);
    return &places_[place];
  }

  bool grow() {
    AddressSet larger;
    larger.capacity_ = std::max(LEAST_CAPACITY, capacity_ * 2);
    larger.places_ = static_cast<uintptr_t *>(calloc(larger.capacity_, sizeof(uintptr_t)));
    if (larger.places_ == nullptr)
      return false;
    for (uint32_t place = 0; place < capacity_; ++place)
      if (places_[place] != 0)
        *larger.place_of(places_[place]) = places_[place];
    free(places_);
    places_ = larger.places_;
    capacity_ = larger.capacity_;
    return true;
  }

  uintptr_t *places_ = nullptr;
  uint32_t capacity_ = 0;
  uint32_t count_ = 0;
};

constinit AddressSet allocatable;
constinit AddressSet statics;

uintptr_t address_of(int32_t handle) {
  return static_cast<uint32_t>(handle);
}

int32_t enter(AddressSet *set, void *address) {
  const uintptr_t handle = reinterpret_cast<uintptr_t>(address);
  return set->insert(handle) ? static_cast<int32_t>(handle) : 0;
}

}  // namespace

int32_t init_handle_table() {
  clear_first_blocks();
  allocatable.clear();
  statics.clear();
  return 0;
}

void destroy_handle_table() {
  allocatable.clear();
  statics.clear();
}

int32_t get_handle_from_alloc_address(void *address) {
  return enter(&allocatable, address);
}

int32_t get_handle_from_static_address(void *address) {
  return enter(&statics, address);
}

void *get_address_from_handle(int32_t handle, const uintptr_t *table) {
  const AddressSet &set = table == StaticHandles ? statics : allocatable;
  const uintptr_t address = address_of(handle);
  return set.contains(address) ? reinterpret_cast<void *>(address) : nullptr;
}

int32_t free_alloc_handle(int32_t handle) {
  const uintptr_t address = address_of(handle);
  if (!allocatable.contains(address))
    return -1;
  allocatable.remove(address);
  return 0;
}
