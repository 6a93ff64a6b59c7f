// The queues that carry records from the operators to GetImportCommand.
//
// A queue is a ring of 32-byte slots behind a table of slot pointers. Table and slots come from the host allocator; a
// slot once allocated is used again until DestroyQueue.
#pragma once

#include <cstddef>
#include <memory>

#include "run/import_command.h"

struct CommandQueue {
  ImportCommand** slots = nullptr;  // `capacity` entries; null until a slot is first used
  std::size_t capacity = 0;         // a power of two, or 0
  std::size_t cleared = 0;          // entries that can be read: the others are not written before their time comes
  std::size_t head = 0;             // the first record; may stand past `capacity` and is masked at each use
  std::size_t count = 0;
};

// Appends a copy of the record to run.commands, the only way into the stream. Throws std::bad_alloc, or
// std::length_error with "deque<T> too long"; the queue is then as it was.
void PushCommand(const ImportCommand& record);

void PushCommand(CommandKey key);
void PushValue(CommandKey key, std::int32_t value);
// With the size 4 that KEY_CLIP and KEY_DOCP carry.
void PushMarker(CommandKey key, std::int32_t value);
// Takes a block from the host allocator over, also when it throws.
void PushPayload(CommandKey key, std::uint32_t size, void* payload);
// Takes a host object over, also when it throws.
template <class Object>
void PushObject(CommandKey key, std::unique_ptr<Object> object) {
  ImportCommand record = {};
  record.key = key;
  record.data = object.get();
  PushCommand(record);
  object.release();
}
// A new double from the host allocator. Throws std::bad_alloc.
void PushWidth(double width, std::uint32_t size);

// Drops the record that was pushed last, without its payload.
void DropLastCommand();

// Takes the record at the head; an empty queue gives a record with key 0 and size 0.
ImportCommand PopCommand(CommandQueue& queue);

// Takes the open path's records off the tail of run.commands: its KEY_PATH, all behind it, and, since the callers are
// written for that, also the one record in front of it. Nothing is taken when no KEY_PATH is queued. Clears
// run.path.PathOpen. Payloads of dropped records are not freed.
void RollBackPath();

// Drops all records, without their payloads, and gives slots and table back.
void DestroyQueue(CommandQueue& queue);
