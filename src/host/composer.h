// The host's text composer. A paragraph is opened, its state is set field by field, text is pasted, the paragraph is
// closed, and what the handle then points to is the composed paragraph, which the host owns and frees.
//
// The records belong to the composer and reach the filter as addresses; the offsets are the contract. Fields with odd
// offsets are packed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/matrix.h"

#pragma pack(push, 1)

struct paragraphStruct {
  unsigned char hostData0[40];
  std::int32_t paragraphOption;
  unsigned char hostData1[20];
};
static_assert(offsetof(paragraphStruct, paragraphOption) == 40);

struct list_s {
  std::uint8_t listFlag;
  unsigned char hostData0[95];
  double listMeasure;
  unsigned char hostData1[24];
};
static_assert(offsetof(list_s, listMeasure) == 96);

// A font as the composer knows it.
struct FontRecord {
  unsigned char hostData0[28];
  std::int32_t fontClass;
  unsigned char hostData1[4];
  std::uint16_t fontCode;
  unsigned char hostData2[2];
};
static_assert(offsetof(FontRecord, fontClass) == 28 && offsetof(FontRecord, fontCode) == 36);

struct CharacterState {
  FontRecord* font;
  std::uint16_t fontCode;
  unsigned char hostData0[46];
  std::int32_t charScale;
  unsigned char hostData1[20];
  double height;  // thousandths of an inch
  double heightCopy;
  unsigned char hostData2[8];
  std::int32_t charOptionA;
  unsigned char hostData3[4];
  std::uint64_t charOptionB;
  unsigned char hostData4[104];
  std::uint32_t replacedFontId;
  unsigned char hostData5[4];
};
static_assert(offsetof(CharacterState, charScale) == 56 && offsetof(CharacterState, height) == 80);
static_assert(offsetof(CharacterState, charOptionA) == 104 && offsetof(CharacterState, charOptionB) == 112);
static_assert(offsetof(CharacterState, replacedFontId) == 224);

struct TextLine {
  unsigned char hostData0[32];
  std::int32_t compression;
  unsigned char hostData1[4];
  double originX;  // thousandths of an inch
  double originY;
  std::int32_t lineFlags;
  unsigned char hostData2[4];
  std::uint32_t lineMode;
  unsigned char hostData3[4];
};
static_assert(offsetof(TextLine, originX) == 40 && offsetof(TextLine, lineFlags) == 56);
static_assert(offsetof(TextLine, lineMode) == 64);

struct ComposedParagraph {
  unsigned char hostData0[44];
  TM placement;
  unsigned char hostData1[36];
};
static_assert(offsetof(ComposedParagraph, placement) == 44);

struct ParagraphStatus {
  paragraphStruct* paragraphInfo;
  list_s* lines;
  unsigned char hostData0[16];
  CharacterState* character;
  unsigned char hostData1[8];
  void* wrapA;
  TextLine* textLine;
  unsigned char hostData2[12];
  std::int32_t statusLimit;
};
static_assert(offsetof(ParagraphStatus, character) == 32 && offsetof(ParagraphStatus, wrapA) == 48);
static_assert(offsetof(ParagraphStatus, textLine) == 56 && offsetof(ParagraphStatus, statusLimit) == 76);

// Filled by SetOpenParagraphInfo and OpenParagraph.
struct ParagraphHandle {
  unsigned char hostData0[8];
  std::uint32_t tag;
  unsigned char hostData1[4];
  ComposedParagraph* paragraph;
  unsigned char hostData2[8];
  ParagraphStatus* status;
  unsigned char hostData3[24];
};
static_assert(offsetof(ParagraphHandle, tag) == 8 && offsetof(ParagraphHandle, paragraph) == 16);
static_assert(offsetof(ParagraphHandle, status) == 32);

#pragma pack(pop)

struct ParagraphPosition {
  double x, y;  // thousandths of an inch
};

void SetOpenParagraphInfo(ParagraphHandle* handle, int option);
// Negative on failure. Kind is 4.
int OpenParagraph(int kind, ParagraphHandle* handle, const ParagraphPosition* position, int option);
ParagraphStatus* GetCurrentParagraphStatusAddress();
// Finishes the paragraph (1), negative on failure, or abandons it (0).
int CloseParagraph(int finish, ParagraphHandle* handle);

void SetTextLineJustifyMode(paragraphStruct* paragraph, list_s* lines, int mode);
// 0 left, 1 right, 2 centre.
void SetTextLineJustification(paragraphStruct* paragraph, list_s* lines, int justification);

// The font of this name, or null. Kind 2 asks the composer's list, 3 a font just activated by name, 1 one activated by
// default; a non-zero `force` gives some font in any case that the composer can.
FontRecord* AddFont(std::uint16_t code, int kind, const char16_t* name, int reserved, int force);
std::uint32_t GetReplacedFontID(const char16_t* name, int style, int weight, FontRecord* font);

// Appends `length` units at the open position. Mode is 2; the last two arguments are null and false.
void edPasteString(const char16_t* text, int length, int mode, void* reserved, bool flag);
// Breaks the pasted text. The range is a character count, the same in both 16-bit halves.
void WrapLine(TextLine* line, void* wrap, std::uint32_t first, std::uint32_t last, const char* breakCharacters);
int edCalcCompression(list_s* lines);

// Chooses substitutes for fonts that are missing. Made for a document kind, "svg" here.
class CFontReplacement {
 public:
  explicit CFontReplacement(const char* kind);
  ~CFontReplacement();
  CFontReplacement(const CFontReplacement&) = delete;
  CFontReplacement& operator=(const CFontReplacement&) = delete;

  unsigned char hostData[293];
  std::uint8_t skipText;  // the user chose to leave texts out
  unsigned char hostTail[2];
};
static_assert(offsetof(CFontReplacement, skipText) == 293);

// The substitute for a name, or null when the user wants none.
FontRecord* ChooseReplacementFont(CFontReplacement* object, const char16_t* name, int style, int weight);
