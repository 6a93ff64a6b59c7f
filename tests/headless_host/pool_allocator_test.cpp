#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

namespace {

class HostAllocatorTest : public HostTest {
 protected:
  HostAllocator& allocator = *DefaultHostAllocator();
  const std::size_t liveBefore = LiveCounts().blocks;
};

}  // namespace

TEST_F(HostAllocatorTest, BlocksOfEverySizeAreAlignedDistinctAndWholeToWrite) {
  std::vector<std::pair<unsigned char*, std::size_t>> blocks;
  for (std::size_t size = 0; size <= 4200; size += size < 100 ? 1 : 61) {
    auto* block = static_cast<unsigned char*>(allocator.Allocate(size));
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u) << size;
    std::memset(block, static_cast<int>(blocks.size() & 0xFF), size);
    blocks.emplace_back(block, size);
  }
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    for (std::size_t at = 0; at < blocks[i].second; ++at) ASSERT_EQ(blocks[i].first[at], i & 0xFF) << blocks[i].second;
    allocator.Free(blocks[i].first);
  }
  EXPECT_EQ(LiveCounts().blocks, liveBefore);
}

TEST_F(HostAllocatorTest, HoldsMoreBlocksOfOneSizeThanASlabHas) {
  std::vector<std::uint32_t*> blocks;
  for (std::uint32_t i = 0; i < 5000; ++i) {
    blocks.push_back(static_cast<std::uint32_t*>(allocator.Allocate(48)));
    ASSERT_NE(blocks.back(), nullptr);
    for (int word = 0; word < 12; ++word) blocks.back()[word] = i;
  }
  EXPECT_EQ(LiveCounts().blocks, liveBefore + 5000);
  for (std::uint32_t i = 0; i < 5000; ++i) {
    for (int word = 0; word < 12; ++word) ASSERT_EQ(blocks[i][word], i);
    allocator.Free(blocks[i]);
  }
  EXPECT_EQ(LiveCounts().blocks, liveBefore);
}

TEST_F(HostAllocatorTest, ABlockHasAtLeastTheSizeAskedAtTheEdgesOfItsClasses) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{15}, std::size_t{16}, std::size_t{17}, std::size_t{2047},
                                 std::size_t{2048}, std::size_t{2049}, std::size_t{100000}}) {
    void* block = allocator.Allocate(size);
    ASSERT_NE(block, nullptr);
    EXPECT_GE(allocator.BlockSize(block), size);
    allocator.Free(block);
  }
}

TEST_F(HostAllocatorTest, ClearedBlocksAreZeroEvenWhenTheirMemoryWasUsed) {
  void* used = allocator.Allocate(96);
  std::memset(used, 0xAA, 96);
  allocator.Free(used);
  auto* block = static_cast<unsigned char*>(allocator.AllocateCleared(12, 8));
  for (int i = 0; i < 96; ++i) ASSERT_EQ(block[i], 0);
  allocator.Free(block);
}

TEST_F(HostAllocatorTest, AClearedBlockWhoseSizeOverflowsIsNull) {
  EXPECT_EQ(allocator.AllocateCleared(std::numeric_limits<std::size_t>::max() / 2, 4), nullptr);
}

TEST_F(HostAllocatorTest, ReallocationKeepsWhatStoodInTheBlock) {
  auto* block = static_cast<unsigned char*>(allocator.Reallocate(nullptr, 10));
  for (unsigned char i = 0; i < 10; ++i) block[i] = i;
  for (const std::size_t size : {20u, 3000u, 9000u, 40u, 10u}) {
    block = static_cast<unsigned char*>(allocator.Reallocate(block, size));
    ASSERT_NE(block, nullptr);
    EXPECT_GE(allocator.BlockSize(block), size);
    for (unsigned char i = 0; i < 10; ++i) ASSERT_EQ(block[i], i) << size;
  }
  allocator.Free(block);
  EXPECT_EQ(LiveCounts().blocks, liveBefore);
}

TEST_F(HostAllocatorTest, NullIsNoBlock) {
  allocator.Free(nullptr);
  EXPECT_EQ(allocator.BlockSize(nullptr), 0u);
  EXPECT_EQ(LiveCounts().blocks, liveBefore);
}

TEST_F(HostAllocatorTest, TheNthAllocationFailsOnceAndOnlyThat) {
  FailAllocation(2);
  void* first = allocator.Allocate(8);
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(allocator.Reallocate(first, 5000), nullptr);  // and leaves the block as it was
  void* third = allocator.Allocate(8);
  EXPECT_NE(third, nullptr);
  allocator.Free(first);
  allocator.Free(third);
  EXPECT_EQ(LiveCounts().blocks, liveBefore);
}

TEST_F(HostAllocatorTest, AFailureOnDemandCanBeCancelled) {
  FailAllocation(1);
  FailAllocation(0);
  void* block = allocator.Allocate(8);
  EXPECT_NE(block, nullptr);
  allocator.Free(block);
}

TEST_F(HostAllocatorTest, HasNoMemoryToMakeFree) { EXPECT_EQ(allocator.OutOfMemory(16), 0); }
