// The host application: its windows, dialogs, translated texts and drawing database.
#pragma once

// Turns the busy cursor on (1) or off (0).
void HourGlass(int on);

// Shows a message and waits for the answer, which is returned. `window` may be null: no owner. `caption` may be null.
int TMessageBox(void* window, const char16_t* text, const char16_t* caption, unsigned flags);

// Translates a text that begins with "(*v*)" into the user's language; writes at most `size` units with the terminator.
void TString(const char16_t* key, char16_t* buffer, int size);

// The pointer in the first extra slot of the window with this class and title; null when there is no such window.
void* FindWindowPointer(const char16_t* className, const char16_t* title);

// The open-file dialog. `file` is both the name shown first and the place of the name picked.
struct OpenFileDialog {
  void* owner;
  const char16_t* filter;            // an extension without its dot
  const char16_t* defaultExtension;  // likewise
  char16_t* file;
  int fileSize;  // units that `file` has room for, the terminator included
  unsigned flags;
  const char16_t* title;
};

// Non-zero when the user picked a file, which then stands in `dialog->file`; 0 when the user cancelled.
int GetOpenFileName(OpenFileDialog* dialog);

// Collapses clip groups that an import left open to one level.
void DBCollapseClipGroup();

// Turns the redraw after each paste of text on (1) or off (0).
void ShowPasteStringChanges(int on);
