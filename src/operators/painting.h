// Painting operators, compound paths and discarding. The translators write none of these.
#pragma once

struct OperatorCall;

void OperatorFill(const OperatorCall&);
void OperatorStroke(const OperatorCall&);
void OperatorCloseStroke(const OperatorCall&);
void OperatorFillStroke(const OperatorCall&);
void OperatorCloseFillStroke(const OperatorCall&);
void OperatorDiscard(const OperatorCall&);
void OperatorDiscardOrClear(const OperatorCall&);
void OperatorBeginCompound(const OperatorCall&);
void OperatorEndCompound(const OperatorCall&);
