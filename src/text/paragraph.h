// The paragraph: the text state goes through the host's composer and leaves as one KEY_PARA.
#pragma once

#include <string_view>

struct ParagraphStatus;

// Composes run.text. A failure shows a message and queues a null record; a font that cannot be found queues one
// silently.
void ComposeParagraph();

// Finds the font of run.text.FontName and puts it into the open paragraph; false when there is none. May rewrite the
// name.
bool SelectFont();

// The height of what is pasted next, in thousandths of an inch.
void SetTextHeight(double size);

// Pastes the text into the open paragraph, with its inline codes carried out.
void PasteTextRuns(std::u16string_view text, ParagraphStatus* status);
