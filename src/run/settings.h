// The settings that the filter reads from the host's store and the ones it writes.
#pragma once

#include <cstdint>

// UnitScale from the setting Units.
void ReadUnits();

// debug, mode, DoOverPrint, DoLayers, DoGroups and defaultWR, in this order.
void ReadSettings();

// An import does not run under the units code 301: it is moved to 300 for the time of the run.
void ForceUnits();
void RestoreUnits();

// CollapseDatabase, and what follows from it.
void RequestClipGroupRefresh();
