// Line attribute operators. A width is scaled to host units as it is set; caps and joins are renumbered for the host.
#pragma once

struct OperatorCall;

void OperatorLineWidth(const OperatorCall&);
void OperatorLineWidthOfAxes(const OperatorCall&);
void OperatorLineWidthOfMatrix(const OperatorCall&);
void OperatorLineCap(const OperatorCall&);
void OperatorLineJoin(const OperatorCall&);
void OperatorDash(const OperatorCall&);
void OperatorFlatness(const OperatorCall&);
