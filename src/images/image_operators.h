// The operators that turn an image file into records.
#pragma once

#include <string>

struct OperatorCall;

// 1 when the file exists, or the user picked another, which then stands in `path`; -1 when the user cancelled.
int FindImageFile(std::u16string& path);

void OperatorImage(const OperatorCall&);
void OperatorPatternImage(const OperatorCall&);
