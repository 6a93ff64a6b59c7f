#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

#include "host/allocator_link.h"
#include "tests/support/recording_allocator.h"

namespace {

constexpr std::size_t kTooMuch = std::numeric_limits<std::size_t>::max() / 4;

std::uint64_t& HeaderOf(void* block) { return static_cast<std::uint64_t*>(block)[-1]; }

bool IsFilledWith(void* block, std::size_t size, unsigned char byte) {
  for (std::size_t i = 0; i < size; ++i) {
    if (static_cast<unsigned char*>(block)[i] != byte) return false;
  }
  return true;
}

}  // namespace

TEST(FallbackAllocator, EveryBlockHasAHeaderWordOfZeroInFront) {
  FallbackAllocator allocator;
  void* const blocks[] = {allocator.AllocateFirst(5),
                          allocator.Allocate(5),
                          allocator.AllocateClearedFirst(5, 3),
                          allocator.AllocateCleared(5, 3),
                          allocator.ReallocateFirst(nullptr, 5),
                          allocator.Reallocate(nullptr, 5)};
  for (void* block : blocks) {
    EXPECT_EQ(HeaderOf(block), 0u);
    std::memset(block, 0xAB, 5);
    allocator.Free(block);
  }
}

TEST(FallbackAllocator, ClearedBlocksAreClear) {
  FallbackAllocator allocator;
  for (void* block : {allocator.AllocateClearedFirst(7, 9), allocator.AllocateCleared(7, 9)}) {
    EXPECT_TRUE(IsFilledWith(block, 63, 0));
    allocator.Free(block);
  }
}

TEST(FallbackAllocator, AProductThatDoesNotFitIsNoBlock) {
  FallbackAllocator allocator;
  EXPECT_EQ(allocator.AllocateClearedFirst(kTooMuch, 8), nullptr);
  EXPECT_EQ(allocator.AllocateCleared(8, kTooMuch), nullptr);
  EXPECT_EQ(allocator.Allocate(std::numeric_limits<std::size_t>::max()), nullptr);
}

TEST(FallbackAllocator, FreeingNothingOrAForeignBlockDoesNothing) {
  FallbackAllocator allocator;
  allocator.Free(nullptr);
  std::uint64_t memory[] = {1, 42};
  allocator.Free(&memory[1]);
  void* block = allocator.Allocate(8);
  HeaderOf(block) = 1;
  allocator.Free(block);
  std::memset(block, 0xAB, 8);
  HeaderOf(block) = 0;
  allocator.Free(block);
}

TEST(FallbackAllocator, ABlockThatWasResizedHasTheFullSizeAndItsContents) {
  FallbackAllocator allocator;
  // A block that lost its header's eight bytes would show with 17, 33, 49, ...: the heap's own sizes are 8 + 16 n.
  for (std::size_t size = 1; size <= 100; ++size) {
    SCOPED_TRACE(size);
    void* block = allocator.Allocate(1);
    std::memset(block, 0xAB, 1);
    block = allocator.Reallocate(block, size);
    EXPECT_GE(allocator.BlockSize(block), size);
    EXPECT_EQ(HeaderOf(block), 0u);
    std::memset(block, 0xAB, size);
    block = allocator.ReallocateFirst(block, 2 * size);
    EXPECT_GE(allocator.BlockSize(block), 2 * size);
    EXPECT_TRUE(IsFilledWith(block, size, 0xAB));
    allocator.Free(block);
  }
}

TEST(FallbackAllocator, AForeignBlockIsNotResized) {
  FallbackAllocator allocator;
  std::uint64_t memory[] = {1, 42};
  EXPECT_EQ(allocator.Reallocate(&memory[1], 100), nullptr);
  EXPECT_EQ(allocator.ReallocateFirst(&memory[1], 100), nullptr);
  EXPECT_EQ(memory[1], 42u);
}

TEST(FallbackAllocator, TheSizeOfABlockLeavesItsHeaderOut) {
  FallbackAllocator allocator;
  // With its header such a block fills what the heap gives for it, so that there is nothing to round up.
  void* block = allocator.Allocate(16);
  EXPECT_EQ(allocator.BlockSize(block), 16u);
  HeaderOf(block) = 1;
  EXPECT_EQ(allocator.BlockSize(block), 0u);
  HeaderOf(block) = 0;
  allocator.Free(block);
}

TEST(FallbackAllocator, HasNoHookAndNothingBehindIt) {
  FallbackAllocator allocator;
  EXPECT_EQ(allocator.OutOfMemory(1), 0);
  EXPECT_EQ(allocator.Reserved10(), 0);
  EXPECT_FALSE(allocator.Reserved11());
}

// A failed allocation of the heap ends a program under AddressSanitizer.
#if !defined(__SANITIZE_ADDRESS__)

TEST(FallbackAllocator, AsksTheActiveAllocatorsHookUntilNothingIsLeft) {
  RecordingAllocator active;
  active.hookCallsUntilNothingIsLeft = 3;
  FallbackAllocator allocator;
  allocator.active = &active;
  EXPECT_EQ(allocator.Allocate(kTooMuch), nullptr);
  EXPECT_EQ(active.hookSizes.size(), 3u);

  active.hookSizes.clear();
  void* block = allocator.Allocate(8);
  std::memset(block, 0xAB, 8);
  EXPECT_EQ(allocator.Reallocate(block, kTooMuch), nullptr);
  EXPECT_EQ(active.hookSizes.size(), 3u);
  EXPECT_TRUE(IsFilledWith(block, 8, 0xAB));
  allocator.Free(block);
}

TEST(FallbackAllocator, AsksNoHookWhenItIsActiveItself) {
  FallbackAllocator allocator;
  allocator.active = &allocator;
  EXPECT_EQ(allocator.Allocate(kTooMuch), nullptr);
}

#endif
