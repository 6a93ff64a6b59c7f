// Every limit of the filter, with the reason that made it necessary.
#pragma once

#include <cstddef>
#include <cstdint>

// A build for fuzzing meets the limits of work early, so that each input stays quick.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
inline constexpr int kWorkDivisor = 1000;
#else
inline constexpr int kWorkDivisor = 1;
#endif

// An element deeper than this makes the load fail. The translators recurse with the tree, so that this bounds the C
// stack.
inline constexpr int kMaxElementDepth = 256;

// An element with more attributes makes the load fail: the XML library compares each attribute with all before it.
inline constexpr int kMaxAttributes = 10'000;

// Bytes of the document's text. The narrow-to-wide conversion counts in 32 signed bits.
inline constexpr std::uint64_t kMaxDocumentBytes = 0x7FFFFFFF;

// One read request of the first read of the file.
inline constexpr std::size_t kMaxReadRequest = 0x10000000;

// Units of an id that are kept; the field holds one more for the terminator.
inline constexpr std::size_t kMaxIdUnits = 49;

// Definitions (clips, gradients, patterns) that may be entered within one another, and entered at all during one
// import: ten of each other, ten deep, would otherwise take for ever from a file of one kilobyte.
inline constexpr std::size_t kMaxDefinitionDepth = 32;
inline constexpr std::uint32_t kMaxDefinitionEntries = 1'000'000 / kWorkDivisor;

// Records and gradient stops that entered definitions may make in one import, before no further one is entered: ten
// thousand shapes that each use a clip of ten thousand would otherwise fill the memory from a file of one megabyte.
inline constexpr std::uint64_t kMaxDefinitionWork = 10'000'000 / kWorkDivisor;

// Groups and texts within one another, those of entered definitions included, from which on no definition is entered.
// It bounds the C stack, since each definition may nest as deep as a document.
inline constexpr std::uint32_t kMaxNestedElements = 1024;

// Units of an operator token that the dispatch sees.
inline constexpr std::size_t kMaxNameUnits = 64;

// Frames that are allocated at a time, a power of two. A drawing needs few, a document at most a few hundred.
inline constexpr std::size_t kFrameBlock = 8;

// Clip levels that are stored; further ones are counted and read as 0.
inline constexpr int kMaxClipLevels = 999;

// Samples of one quadratic: its step may vanish against the parameter, or be 0.
inline constexpr int kMaxQuadraticSamples = 1'000'000 / kWorkDivisor;

// Samples of all quadratics of one import, after which each is one straight line: a short command can ask for as many
// as the limit of one allows.
inline constexpr int kMaxImportSamples = 10'000'000 / kWorkDivisor;

// Units of a spot colour's name in a frame; the field holds one more for the terminator.
inline constexpr std::size_t kMaxColourNameUnits = 50;

// Units of text in one paragraph; the buffer holds one more for the terminator.
inline constexpr std::size_t kMaxTextUnits = 999;

// Units of a font name that are kept; the buffer holds one more for the terminator.
inline constexpr std::size_t kMaxFontNameUnits = 531;

// Units of a height value in an inline code.
inline constexpr std::size_t kMaxHeightUnits = 19;

// Units of a path that the host's dialogs and folders handle, the terminator included.
inline constexpr std::size_t kHostPathUnits = 260;

// Entries of the table of named gradients that a lookup visits.
inline constexpr std::size_t kNamedGradientsVisited = 256;

// Bytes of one block read from a download.
inline constexpr std::size_t kDownloadBlock = 4096;
