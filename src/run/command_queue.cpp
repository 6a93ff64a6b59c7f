#include "run/command_queue.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

#include "run/host_memory.h"
#include "run/import_run.h"

namespace {

constexpr std::size_t kLargestCapacity = std::numeric_limits<std::size_t>::max() / sizeof(ImportCommand*) / 2;

// A page of entries.
constexpr std::size_t kClearedAtOnce = 512;

// Makes entries readable as far as `end`, or a little further. Half of a large table may never be used, and is then
// never touched.
//
// This and Grow are seldom called: inlined, they would cost every record the registers that they need.
[[gnu::noinline]] void ClearUpTo(CommandQueue& queue, std::size_t end) {
  end = std::min(queue.capacity, (end / kClearedAtOnce + 1) * kClearedAtOnce);
  std::memset(queue.slots + queue.cleared, 0, (end - queue.cleared) * sizeof(ImportCommand*));
  queue.cleared = end;
}

// Entries keep their order and `head` its value: what had wrapped round moves behind the old end as far as the new room
// goes, and the rest to the start of the new table.
[[gnu::noinline]] void Grow(CommandQueue& queue) {
  std::size_t capacity = queue.capacity ? queue.capacity : 1;
  while (capacity == queue.capacity || capacity < 8) {
    if (capacity > kLargestCapacity) throw std::length_error("deque<T> too long");
    capacity *= 2;
  }
  auto** slots = static_cast<ImportCommand**>(AllocateHost(capacity * sizeof(ImportCommand*)));
  const CommandQueue old = std::exchange(queue, {slots, capacity, 0, queue.head, queue.count});
  ClearUpTo(queue, old.head + old.capacity);
  const std::size_t first = old.head & (old.capacity - 1);
  const std::size_t behind = old.capacity - first;
  if (old.capacity != 0) {
    std::copy_n(old.slots + first, behind, slots + (old.head & (capacity - 1)));
    std::copy_n(old.slots, first, slots + ((old.head + behind) & (capacity - 1)));
  }
  FreeHost(old.slots);
}

// Also resets `head` when the last record goes.
void DropTail(CommandQueue& queue) {
  queue.slots[(queue.head + queue.count - 1) & (queue.capacity - 1)]->key = KEY_NULL;
  if (--queue.count == 0) queue.head = 0;
}

// The slot behind the last record, which counts from now on; the caller fills it.
ImportCommand& NewRecord(CommandQueue& queue) {
  if (queue.capacity <= queue.count + 1) Grow(queue);
  queue.head &= queue.capacity - 1;
  const std::size_t index = (queue.head + queue.count) & (queue.capacity - 1);
  if (index >= queue.cleared) ClearUpTo(queue, index);
  ImportCommand*& slot = queue.slots[index];
  if (!slot) slot = static_cast<ImportCommand*>(AllocateHost(sizeof(ImportCommand)));
  ++queue.count;
  return *slot;
}

// The bytes behind the value are zero, whatever the slot held before.
void PushSized(CommandKey key, std::uint32_t size, std::int32_t value) {
  ImportCommand& record = NewRecord(run.commands);
  record.key = key;
  record.size = size;
  std::memset(record.bytes, 0, sizeof record.bytes);
  record.value = value;
}

}  // namespace

void PushCommand(const ImportCommand& record) { NewRecord(run.commands) = record; }

void PushCommand(CommandKey key) { PushSized(key, 0, 0); }

void PushValue(CommandKey key, std::int32_t value) { PushSized(key, 0, value); }

void PushMarker(CommandKey key, std::int32_t value) { PushSized(key, 4, value); }

void PushPayload(CommandKey key, std::uint32_t size, void* payload) {
  try {
    ImportCommand& record = NewRecord(run.commands);
    record.key = key;
    record.size = size;
    record.data = payload;
  } catch (...) {
    FreeHost(payload);
    throw;
  }
}

void PushWidth(double width, std::uint32_t size) {
  auto* payload = static_cast<double*>(AllocateHost(sizeof(double)));
  *payload = width;
  PushPayload(KEY_WIDT, size, payload);
}

void DropLastCommand() { DropTail(run.commands); }

ImportCommand PopCommand(CommandQueue& queue) {
  if (queue.count == 0) return {};
  ImportCommand& slot = *queue.slots[queue.head & (queue.capacity - 1)];
  const ImportCommand record = slot;
  slot.key = KEY_NULL;
  if (--queue.count == 0) {
    queue.head = 0;
  } else {
    ++queue.head;
  }
  return record;
}

void RollBackPath() {
  CommandQueue& queue = run.commands;
  for (std::size_t i = queue.count; i-- > 0;) {
    const std::uint32_t key = queue.slots[(queue.head + i) & (queue.capacity - 1)]->key;
    if (key != KEY_PATH && key != KEY_ELLI) continue;
    // A path that is the first record has nothing in front of it to take.
    const std::size_t target = i > 0 ? i - 1 : 0;
    while (queue.count > target) DropTail(queue);
    break;
  }
  run.path.PathOpen = 0;
}

void DestroyQueue(CommandQueue& queue) {
  while (queue.count > 0) DropTail(queue);
  for (std::size_t i = queue.cleared; i-- > 0;) {
    if (queue.slots[i]) FreeHost(queue.slots[i]);
  }
  FreeHost(queue.slots);
  queue = CommandQueue();
}
