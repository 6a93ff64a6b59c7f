// Lets an allocation of the code in the test program fail, the filter's included: those by operator new and those by
// realloc. Other libraries are not concerned.
#pragma once

// So many allocations still go well, and the one behind them fails. Below 0 none fails.
void LimitAllocations(long count);

// Ends the limit. Returns whether an allocation has failed.
bool EndAllocationLimit();
