// The gradient fill of a document: the @k operator.
#pragma once

struct FillDefinition;
struct OperatorCall;

// A new record of a gradient, cleared but for its class and its matrices, which are the identity. Throws
// std::bad_alloc.
FillDefinition* NewGradientFill();
// Appends a colour at a position in percent; what is beyond the room of the list is dropped.
void AddStop(FillDefinition& fill, unsigned colour, int position);
// The members that all stop lists share, with no stop yet. `type` is kLinearFill or kRadialFill.
void BeginStopList(FillDefinition& fill, unsigned type);

void OperatorGradientFill(const OperatorCall&);
