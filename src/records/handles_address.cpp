// Handles on targets of 32-bit addresses: the address itself. Which addresses are handles is kept beside, so
// that a stale or foreign number is refused and not followed.
#include "records/handles.h"
#include "records/published.h"

#include <cstdlib>

using namespace qxport;

namespace {

// A set of addresses: a bit for each that there is, in pages that are made when they are needed and that stay
// until the set is cleared. So one thread enters and removes while others look up, and nothing ever moves.
class AddressSet {
public:
  bool contains(uintptr_t address) const {
    const Page *const *pages = published(regions_[address / REGION]);
    const Page *page = pages == nullptr ? nullptr : published(pages[address % REGION / PAGE]);
    return page != nullptr && (published(page->words[word_of(address)]) & bit_of(address)) != 0;
  }

  // False when memory ran out.
  bool insert(uintptr_t address) {
    Page **&pages = regions_[address / REGION];
    if (!provide(pages, REGION / PAGE))
      return false;
    Page *&page = pages[address % REGION / PAGE];
    if (!provide(page, 1))
      return false;
    uint32_t &word = page->words[word_of(address)];
    publish(word, word | bit_of(address));
    return true;
  }

  // Of an address that is in the set.
  void remove(uintptr_t address) {
    uint32_t &word = regions_[address / REGION][address % REGION / PAGE]->words[word_of(address)];
    publish(word, word & ~bit_of(address));
  }

  void clear() {
    for (Page **&pages : regions_) {
      for (size_t i = 0; pages != nullptr && i < REGION / PAGE; ++i)
        free(pages[i]);
      free(pages);
      pages = nullptr;
    }
  }

private:
  static constexpr uintptr_t PAGE = 1 << 12;    // addresses of a page
  static constexpr uintptr_t REGION = 1 << 22;  // addresses of the pages made known at once
  static constexpr uintptr_t WORD = 32;

  struct Page {
    uint32_t words[PAGE / WORD];
  };

  static size_t word_of(uintptr_t address) { return address % PAGE / WORD; }
  static uint32_t bit_of(uintptr_t address) { return uint32_t{1} << (address % WORD); }

  // Makes `count` zeroed things known where there are none yet. False when memory ran out.
  template <typename Thing>
  static bool provide(Thing *&cell, size_t count) {
    if (cell == nullptr)
      publish(cell, static_cast<Thing *>(calloc(count, sizeof(Thing))));
    return cell != nullptr;
  }

  Page **regions_[UINTPTR_MAX / REGION + 1] = {};
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
