// Ending a path: closing its last subpath, KEY_ENDP, and the flat fill definition behind it.
#pragma once

struct OperatorCall;

enum CloseMode { kLeaveOpen = 0, kClose = 1, kCloseIfNear = 2 };

// Draws the line from the pen to the start of the subpath, unless no path is open or the pen is there. kCloseIfNear
// draws it only over a gap of at most 0.05 device units on both axes.
void ClosePath(CloseMode mode);

// Ends the open path, if one is open: KEY_ENDP, and KEY_FDEF unless a clip is pending. Throws std::bad_alloc.
void EndPath();

void OperatorClose(const OperatorCall&);
void OperatorCloseIfNear(const OperatorCall&);
void OperatorCloseAlone(const OperatorCall&);
void OperatorFlatFill(const OperatorCall&);
