// Ordered lists of bitmaps: a header in locked global memory, and an array of handle records that is exactly as long
// as the list.
#include "core/bitmap_list.h"

#include <algorithm>
#include <cstring>

#include "core/duplicate.h"
#include "core/memory.h"
#include "core/status.h"

namespace zavo {
namespace {

// Gives the array its new length; the items kept are those at the front.
bool resizeItems(BitmapList& list, uint32_t count) {
  OsBlock<BitmapHandle> items(list.items);
  bool resized = true;
  if (count == 0) {
    items.reset();
  } else if (items) {
    resized = items.resize(count);
  } else {
    items = OsBlock<BitmapHandle>::allocate(count);
    resized = static_cast<bool>(items);
  }
  list.items = items.release();
  return resized;
}

int insertItem(BitmapList& list, uint32_t index, const BitmapHandle& item) {
  if (list.count == UINT32_MAX || !resizeItems(list, list.count + 1)) return KERR_NO_MEMORY;
  const uint32_t position = std::min(index, list.count);
  BitmapHandle* slot = list.items + position;
  memmove(slot + 1, slot, (list.count - position) * sizeof(BitmapHandle));
  *slot = item;
  ++list.count;
  return KSUCCESS;
}

// Takes items out without freeing them. A failed shrink keeps the larger array, which does no harm.
void removeItems(BitmapList& list, uint32_t index, uint32_t count) {
  BitmapHandle* slot = list.items + index;
  memmove(slot, slot + count, (list.count - index - count) * sizeof(BitmapHandle));
  list.count -= count;
  (void)resizeItems(list, list.count);
}

void deleteItems(BitmapList& list, uint32_t index, uint32_t count) {
  for (uint32_t item = index; item < index + count; ++item) Zv_FreeBitmap(&list.items[item]);
  removeItems(list, index, count);
}

// A list header while it is being filled; the list and its bitmaps are freed unless it is released.
class OwnedList {
 public:
  OwnedList() : header_(OsBlock<BitmapList>::allocateZeroed(1)) {}
  OwnedList(const OwnedList&) = delete;
  OwnedList& operator=(const OwnedList&) = delete;
  ~OwnedList() {
    if (header_ && header_->count != 0) deleteItems(*header_, 0, header_->count);
  }

  explicit operator bool() const { return static_cast<bool>(header_); }
  BitmapList& operator*() { return *header_; }
  [[nodiscard]] BitmapListHandle release() { return GlobalHandle(header_.release()); }

 private:
  OsBlock<BitmapList> header_;
};

int copyItems(BitmapList& destination, BitmapList& source, uint32_t index, uint32_t count) {
  for (uint32_t item = index; item < index + count; ++item) {
    BitmapHandle copy{};
    if (const int status = Zv_CopyBitmap(&copy, &source.items[item]); status != KSUCCESS) return status;
    if (const int status = insertItem(destination, destination.count, copy); status != KSUCCESS) {
      Zv_FreeBitmap(&copy);
      return status;
    }
  }
  return KSUCCESS;
}

BitmapHandle recordOrZeros(const BitmapHandle* item) {
  return item != nullptr ? *item : BitmapHandle{};
}

// `count` cut to the items that follow `index`, which is one of the list's.
uint32_t countFrom(const BitmapList& list, uint32_t index, uint32_t count) {
  return std::min(list.count - index, count);
}

}  // namespace

// The block stays locked from its allocation, so its address outlives this lock.
BitmapList* bitmapList(BitmapListHandle list) {
  if (list == nullptr) return nullptr;
  auto* header = static_cast<BitmapList*>(GlobalLock(list));
  if (header != nullptr) GlobalUnlock(list);
  return header;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_CreateBitmapList(BitmapListHandle* list) {
  if (list == nullptr) return KERR_BAD_PARAMETER;
  *list = nullptr;
  OwnedList created;
  if (!created) return KERR_NO_MEMORY;
  *list = created.release();
  return KSUCCESS;
}

int ZAVO_CALL Zv_DestroyBitmapList(BitmapListHandle list) {
  BitmapList* header = bitmapList(list);
  if (header == nullptr) return KERR_BAD_PARAMETER;
  if (header->count != 0) deleteItems(*header, 0, header->count);
  Zv_OsFree(header);
  return KSUCCESS;
}

int ZAVO_CALL Zv_InsertBitmapListItem(BitmapListHandle list, unsigned index, const BitmapHandle* item) {
  BitmapList* header = bitmapList(list);
  if (header == nullptr) return KERR_BAD_PARAMETER;
  return insertItem(*header, index, recordOrZeros(item));
}

int ZAVO_CALL Zv_RemoveBitmapListItem(BitmapListHandle list, unsigned index, BitmapHandle* item) {
  BitmapList* header = bitmapList(list);
  if (header == nullptr || index >= header->count) return KERR_BAD_PARAMETER;
  if (item != nullptr) *item = header->items[index];
  removeItems(*header, index, 1);
  return KSUCCESS;
}

int ZAVO_CALL Zv_DeleteBitmapListItems(BitmapListHandle list, unsigned index, unsigned count) {
  BitmapList* header = bitmapList(list);
  if (header == nullptr || index >= header->count || count == 0) return KERR_BAD_PARAMETER;
  deleteItems(*header, index, countFrom(*header, index, count));
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetBitmapListCount(BitmapListHandle list, unsigned* count) {
  const BitmapList* header = bitmapList(list);
  if (header == nullptr || count == nullptr) return KERR_BAD_PARAMETER;
  *count = header->count;
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetBitmapListItem(BitmapListHandle list, unsigned index, BitmapHandle* item) {
  const BitmapList* header = bitmapList(list);
  if (header == nullptr || index >= header->count || item == nullptr) return KERR_BAD_PARAMETER;
  *item = header->items[index];
  return KSUCCESS;
}

int ZAVO_CALL Zv_SetBitmapListItem(BitmapListHandle list, unsigned index, const BitmapHandle* item) {
  BitmapList* header = bitmapList(list);
  if (header == nullptr || index >= header->count) return KERR_BAD_PARAMETER;
  header->items[index] = recordOrZeros(item);
  return KSUCCESS;
}

int ZAVO_CALL Zv_CopyBitmapListItems(BitmapListHandle* destination, BitmapListHandle list, unsigned index,
                                     unsigned count) {
  BitmapList* header = bitmapList(list);
  if (header == nullptr || index >= header->count || count == 0 || destination == nullptr) return KERR_BAD_PARAMETER;
  OwnedList copy;
  if (!copy) return KERR_NO_MEMORY;
  const int status = copyItems(*copy, *header, index, countFrom(*header, index, count));
  if (status != KSUCCESS) return status;
  *destination = copy.release();
  return KSUCCESS;
}
