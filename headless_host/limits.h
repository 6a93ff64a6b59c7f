// The bounds that the reference host keeps, each with its reason.
#pragma once

#include <cstddef>
#include <cstdint>

// A side longer than this is no picture for a drawing; it also keeps width times height far from any overflow.
inline constexpr std::uint32_t kMaxBitmapSide = 16384;

// At four bytes a pixel this is 256 MB, the most that one picture of a few kilobytes can make the host allocate.
inline constexpr std::uint64_t kMaxBitmapPixels = 64'000'000;

// The whole file is held in memory while it is decoded.
inline constexpr std::uint64_t kMaxImageFileBytes = std::uint64_t{256} << 20;

// A progressive JPEG can hold any number of passes over the whole picture in a few bytes each.
inline constexpr int kMaxJpegScans = 100;

// True when a picture of this size may be decoded.
constexpr bool IsBitmapSizeAllowed(std::uint64_t width, std::uint64_t height) {
  return width >= 1 && height >= 1 && width <= kMaxBitmapSide && height <= kMaxBitmapSide &&
         width * height <= kMaxBitmapPixels;
}

// Room of the buffer that LoadBaseDir writes to, in units, the terminator included.
inline constexpr std::size_t kBaseDirUnits = 260;
