#include "run/command_queue.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <new>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include "run/host_memory.h"
#include "tests/support/filter_test.h"
#include "tests/support/recording_allocator.h"

namespace {

class CommandQueueTest : public FilterTest {
 protected:
  static void Push(int n) {
    for (int i = 0; i < n; ++i) PushValue(KEY_FILL, next_++);
  }
  // Takes `n` records, which must be the ones pushed first, in order.
  static void ExpectNext(int first, int n) {
    for (int i = 0; i < n; ++i) {
      const ImportCommand record = PopCommand(run.commands);
      EXPECT_EQ(record.key, KEY_FILL);
      EXPECT_EQ(record.value, first + i);
    }
  }
  CommandQueueTest() { next_ = 0; }

  CommandQueue& queue = run.commands;

 private:
  static inline int next_ = 0;
};

}  // namespace

TEST_F(CommandQueueTest, AnEmptyQueueGivesANullRecord) {
  const ImportCommand record = PopCommand(queue);
  EXPECT_EQ(record.key, KEY_NULL);
  EXPECT_EQ(record.size, 0u);
  EXPECT_EQ(queue.capacity, 0u);
}

TEST_F(CommandQueueTest, TheTableGrowsAtTheFirstTheEighthAndTheSixteenthRecord) {
  const std::size_t expected[] = {8, 8, 8, 8, 8, 8, 8, 16, 16, 16, 16, 16, 16, 16, 16, 32};
  for (std::size_t capacity : expected) {
    Push(1);
    EXPECT_EQ(queue.capacity, capacity) << "at record " << queue.count;
  }
  ExpectNext(0, 16);
}

TEST_F(CommandQueueTest, CopiesAllBytesOfARecord) {
  ImportCommand record;
  record.key = 0x89ABCDEF;
  record.size = 0x01234567;
  for (unsigned i = 0; i < sizeof record.bytes; ++i) record.bytes[i] = static_cast<unsigned char>(i + 1);
  PushCommand(record);
  const ImportCommand popped = PopCommand(queue);
  EXPECT_EQ(std::memcmp(&popped, &record, sizeof record), 0);
}

TEST_F(CommandQueueTest, AValueIsFollowedByZerosWhateverItsSlotHeldBefore) {
  ImportCommand full;
  std::memset(&full, 0xFF, sizeof full);
  const auto bytesBehind = [&](auto push, std::int32_t value) {
    PushCommand(full);
    PopCommand(queue);
    push();  // takes the same slot again
    const ImportCommand record = PopCommand(queue);
    EXPECT_EQ(record.value, value);
    return std::vector<int>(record.bytes + sizeof value, std::end(record.bytes));
  };
  const std::vector<int> zeros(20, 0);
  EXPECT_EQ(bytesBehind([] { PushCommand(KEY_PATH); }, 0), zeros);
  EXPECT_EQ(bytesBehind([] { PushCommand(KEY_ENDP); }, 0), zeros);
  EXPECT_EQ(bytesBehind([] { PushValue(KEY_SGRP, 1); }, 1), zeros);
  EXPECT_EQ(bytesBehind([] { PushValue(KEY_EGRP, 1); }, 1), zeros);
  EXPECT_EQ(bytesBehind([] { PushMarker(KEY_CLIP, 1); }, 1), zeros);
}

TEST_F(CommandQueueTest, APopThatEmptiesTheQueueGoesBackToTheFirstSlotAndItsMemory) {
  Push(3);
  ImportCommand* const first = queue.slots[0];
  ExpectNext(0, 2);
  EXPECT_EQ(queue.head, 2u);
  ExpectNext(2, 1);
  EXPECT_EQ(queue.head, 0u);
  const std::size_t blocks = LiveCounts().blocks;
  Push(1);
  EXPECT_EQ(queue.slots[0], first);
  EXPECT_EQ(first->value, 3);
  EXPECT_EQ(LiveCounts().blocks, blocks);
}

TEST_F(CommandQueueTest, APopMarksItsSlotAsEmpty) {
  Push(2);
  PopCommand(queue);
  EXPECT_EQ(queue.slots[0]->key, KEY_NULL);
  EXPECT_EQ(queue.slots[1]->key, KEY_FILL);
}

TEST_F(CommandQueueTest, SlotsAreMadeOnceAndUsedAgainOnEveryPassOverTheRing) {
  const std::size_t before = LiveCounts().blocks;
  Push(2);
  for (int i = 0; i < 100; ++i) {
    Push(1);
    ExpectNext(i, 1);
  }
  EXPECT_EQ(queue.capacity, 8u);
  EXPECT_EQ(LiveCounts().blocks - before, 9u);  // the table and its eight slots
}

TEST_F(CommandQueueTest, HeadMayStandPastTheTableUntilTheNextPush) {
  Push(6);
  ExpectNext(0, 5);
  Push(5);  // positions 5 to 10, of which 8 to 10 have wrapped round to 0 to 2
  EXPECT_EQ(queue.head, 5u);
  ExpectNext(5, 4);
  EXPECT_EQ(queue.head, 9u);
  Push(1);
  EXPECT_EQ(queue.head, 1u);
  EXPECT_EQ(queue.capacity, 8u);
  ExpectNext(9, 3);
}

TEST_F(CommandQueueTest, GrowingKeepsTheHeadAndPutsWhatHadWrappedRoundBehindTheOldEnd) {
  Push(7);
  ExpectNext(0, 5);
  Push(5);  // positions 5 to 11: slots 5, 6, 7, 0, 1, 2, 3
  const std::vector<ImportCommand*> before(queue.slots, queue.slots + 8);
  EXPECT_EQ(queue.count, 7u);
  Push(1);
  EXPECT_EQ(queue.capacity, 16u);
  EXPECT_EQ(queue.head, 5u);
  for (std::size_t i : {5, 6, 7}) EXPECT_EQ(queue.slots[i], before[i]);
  for (std::size_t i : {0, 1, 2, 3}) EXPECT_EQ(queue.slots[8 + i], before[i]);
  EXPECT_EQ(queue.slots[12]->value, 12);
  EXPECT_EQ(queue.slots[13], nullptr);
  ExpectNext(5, 8);
}

// A table is cleared in pieces as its entries come into use: an entry that was never written must not be read, and one
// that is in use must not be cleared.
TEST_F(CommandQueueTest, LargeTablesGrowWithTheirHeadAnywhere) {
  struct Dirty : RecordingAllocator {
    void* Allocate(std::size_t size) override {
      void* block = RecordingAllocator::Allocate(size);
      std::memset(block, 0xA5, size);
      return block;
    }
  };
  for (const int capacity : {512, 1024}) {
    for (const int head : {1, 255, 511, 512, 513, 600, 1023}) {
      if (head >= capacity) continue;
      SCOPED_TRACE(testing::Message() << "head " << head << " of " << capacity);
      Dirty dirty;
      HostAllocator* const before = std::exchange(run.allocator.iface, &dirty);
      int pushed = 0;
      int popped = 0;
      const auto push = [&] { PushValue(KEY_FILL, pushed++); };
      const auto pop = [&] { ASSERT_EQ(PopCommand(queue).value, popped++); };
      while (queue.capacity < static_cast<std::size_t>(capacity)) push();
      while (queue.count > 1) pop();
      while (queue.head != static_cast<std::size_t>(head)) {
        push();
        pop();
      }
      while (queue.capacity == static_cast<std::size_t>(capacity)) push();
      EXPECT_EQ(queue.head, static_cast<std::size_t>(head));
      for (int i = 0; i < 2 * capacity; ++i) {
        push();
        pop();
      }
      while (queue.count > 0) pop();
      EXPECT_EQ(popped, pushed);
      DestroyQueue(queue);
      run.allocator.iface = before;
      std::sort(dirty.blocks.begin(), dirty.blocks.end());
      std::sort(dirty.freed.begin(), dirty.freed.end());
      EXPECT_EQ(dirty.freed, dirty.blocks);
    }
  }
}

TEST_F(CommandQueueTest, ATableTooLargeForTheSizeArithmeticFailsWithItsText) {
  queue.capacity = std::size_t{1} << 60;
  queue.count = queue.capacity - 1;
  try {
    PushCommand(KEY_ENDF);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::length_error& error) {
    EXPECT_STREQ(error.what(), "deque<T> too long");
  }
  queue = CommandQueue();
}

TEST_F(CommandQueueTest, APushThatFindsNoMemoryLeavesTheQueueAsItWas) {
  FailAllocation(1);  // the table
  EXPECT_THROW(PushCommand(KEY_ENDF), std::bad_alloc);
  EXPECT_EQ(queue.capacity, 0u);
  FailAllocation(2);  // the slot
  EXPECT_THROW(PushCommand(KEY_ENDF), std::bad_alloc);
  EXPECT_EQ(queue.count, 0u);
  Push(1);
  ExpectNext(0, 1);
}

// The bench counts the blocks at the end.
TEST_F(CommandQueueTest, APayloadIsGivenBackWhenItsPushFails) {
  void* payload = AllocateHost(8);
  FailAllocation(1);
  EXPECT_THROW(PushPayload(KEY_WIDT, 8, payload), std::bad_alloc);
}

TEST_F(CommandQueueTest, ASegmentWhosePayloadFindsNoMemoryIsNotPushed) {
  for (const char* segment : {"10 0 L", "1 0 2 0 3 0 C"}) {
    SCOPED_TRACE(segment);
    ASSERT_EQ(Run("0 0 M 5 0 L"), (Lines{"PATH", "LINE 0,100 5,100"}));
    FailAllocation(1);
    EXPECT_EQ(Run(segment), Lines());
    FailAllocation(0);
    run.path.PathOpen = 0;
  }
}

// --- The forms of a record

TEST_F(CommandQueueTest, RecordsOfEachFormCarryTheirSize) {
  PushCommand(KEY_PATH);
  PushValue(KEY_FILL, -1);
  PushMarker(KEY_CLIP, 1);
  PushWidth(0.5, 0);
  PushWidth(0.25, 8);
  EXPECT_EQ(Drain(), (Lines{"PATH", "FILL -1", "CLIP 1", "WIDT 0.5", "WIDT8 0.25"}));
  for (const ImportCommand& record : {commands[0], commands[1], commands[3]}) EXPECT_EQ(record.size, 0u);
  EXPECT_EQ(commands[2].size, 4u);
}

TEST_F(CommandQueueTest, PathRecordsCarryZeroAndGroupRecordsOne) {
  PushCommand(KEY_PATH);
  PushCommand(KEY_ENDP);
  for (const ImportCommand& record : {PopCommand(queue), PopCommand(queue)}) EXPECT_EQ(record.value, 0);
  run.GroupsEnabled = 1;
  StartGroup();
  EndGroup();
  StartClipGroup();
  EndClipGroup();
  EXPECT_EQ(Drain(),
            (Lines{"SGRP 1", "EGRP 1", "SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1", "ECGR 1"}));
}

// --- Rolling a path back

class PathRollBack : public CommandQueueTest {
 protected:
  // `before` records, the path and two segments.
  static void QueuePath(int before) {
    Push(before);
    PushCommand(KEY_PATH);
    Push(2);
    run.path.PathOpen = 1;
  }
};

TEST_F(PathRollBack, TakesAlsoTheRecordInFrontOfThePath) {
  QueuePath(5);
  RollBackPath();
  EXPECT_EQ(queue.count, 4u);
  EXPECT_EQ(run.path.PathOpen, 0u);
  ExpectNext(0, 4);
}

TEST_F(PathRollBack, WithoutAPathChangesNothingButTheFlag) {
  Push(3);
  run.path.PathOpen = 1;
  RollBackPath();
  EXPECT_EQ(queue.count, 3u);
  EXPECT_EQ(run.path.PathOpen, 0u);
  ExpectNext(0, 3);
}

TEST_F(PathRollBack, OnAnEmptyQueueClearsTheFlag) {
  run.path.PathOpen = 1;
  RollBackPath();
  EXPECT_EQ(run.path.PathOpen, 0u);
  EXPECT_EQ(queue.capacity, 0u);
}

TEST_F(PathRollBack, OfAPathAtTheSecondPlaceEmptiesTheQueueAndGoesBackToTheFirstSlot) {
  Push(2);
  ExpectNext(0, 2);
  Push(2);
  ExpectNext(2, 1);
  EXPECT_EQ(queue.head, 1u);
  PushCommand(KEY_PATH);
  RollBackPath();
  EXPECT_EQ(queue.count, 0u);
  EXPECT_EQ(queue.head, 0u);
}

TEST_F(PathRollBack, OfAPathAtTheFirstPlaceEmptiesTheQueue) {
  QueuePath(0);
  RollBackPath();
  EXPECT_EQ(queue.count, 0u);
  EXPECT_EQ(run.path.PathOpen, 0u);
  Push(1);
  EXPECT_EQ(queue.count, 1u);
}

TEST_F(PathRollBack, TakesTheLastPathAlone) {
  QueuePath(2);  // 0 1 PATH 2 3
  PushCommand(KEY_ENDP);
  Push(1);
  QueuePath(0);
  RollBackPath();
  EXPECT_EQ(Drain(), (Lines{"FILL 0", "FILL 1", "PATH", "FILL 2", "FILL 3", "ENDP"}));
}

TEST_F(PathRollBack, CountsAnEllipseAsAPath) {
  Push(3);
  PushCommand(KEY_ELLI);
  Push(1);
  RollBackPath();
  EXPECT_EQ(queue.count, 2u);
}

TEST_F(PathRollBack, LooksRoundTheRing) {
  Push(6);
  ExpectNext(0, 6);
  Push(7);
  ExpectNext(6, 6);
  QueuePath(0);  // the record in front of it is 12, at slot 6, and the path at slot 7
  EXPECT_EQ(queue.slots[7]->key, KEY_PATH);
  EXPECT_EQ(queue.slots[0]->key, KEY_FILL);
  RollBackPath();
  EXPECT_EQ(queue.count, 0u);
  for (std::size_t i : {6, 7, 0, 1}) EXPECT_EQ(queue.slots[i]->key, KEY_NULL);
}

TEST_F(PathRollBack, DoesNotFreeWhatTheRecordsCarried) {
  PushCommand(KEY_PATH);
  PushWidth(0.5, 8);
  const ImportCommand width = *queue.slots[1];
  RollBackPath();
  EXPECT_EQ(*static_cast<double*>(width.data), 0.5);
  FreeHost(width.data);
}

// Every place of the head and of the path in the ring, against a plain list.
TEST_F(PathRollBack, AgreesWithAPlainListWhateverCameBefore) {
  struct Entry {
    std::uint32_t key;
    std::int32_t value;
  };
  std::deque<Entry> expected;
  std::mt19937 random(1);
  std::int32_t next = 0;
  std::size_t longest = 0;
  std::size_t rollBacks = 0;
  for (int step = 0; step < 20'000; ++step) {
    const auto choice = random() % 100;
    // The list grows for a while and shrinks for a while.
    const unsigned pushes = step / 500 % 2 == 0 ? 55 : 40;
    if (choice < pushes) {
      PushValue(KEY_FILL, ++next);
      expected.push_back({KEY_FILL, next});
    } else if (choice < pushes + 3) {
      PushCommand(KEY_PATH);
      expected.push_back({KEY_PATH, 0});
    } else if (choice < pushes + 4) {
      RollBackPath();
      std::size_t path = expected.size();
      while (path > 0 && expected[path - 1].key != KEY_PATH) --path;
      if (path > 0) {
        expected.resize(path >= 2 ? path - 2 : 0, Entry{});
        ++rollBacks;
      }
    } else {
      const ImportCommand record = PopCommand(queue);
      const Entry front = expected.empty() ? Entry{KEY_NULL, 0} : expected.front();
      if (!expected.empty()) expected.pop_front();
      ASSERT_EQ(record.key, front.key);
      ASSERT_EQ(record.value, front.value);
    }
    ASSERT_EQ(queue.count, expected.size());
    if (queue.count == 0) {
      ASSERT_EQ(queue.head, 0u);
    }
    longest = std::max(longest, queue.count);
  }
  EXPECT_GT(longest, 32u);
  EXPECT_GT(rollBacks, 50u);
}

// --- Destroying a queue

TEST_F(CommandQueueTest, DestroyingGivesTheSlotsBackFromTheLastOnAndThenTheTable) {
  RecordingAllocator allocator;
  HostAllocator* const before = std::exchange(run.allocator.iface, &allocator);
  Push(3);
  EXPECT_EQ(allocator.sizes, (std::vector<std::size_t>{8 * sizeof(void*), 32, 32, 32}));
  std::vector<void*> expected = allocator.blocks;
  std::reverse(expected.begin(), expected.end());
  DestroyQueue(queue);
  EXPECT_EQ(allocator.freed, expected);
  EXPECT_EQ(queue.capacity, 0u);
  EXPECT_EQ(queue.count, 0u);
  EXPECT_EQ(queue.head, 0u);
  run.allocator.iface = before;
}

TEST_F(CommandQueueTest, ADestroyedQueueTakesRecordsAgain) {
  Push(9);
  DestroyQueue(queue);
  Push(1);
  EXPECT_EQ(queue.capacity, 8u);
  ExpectNext(9, 1);
}
