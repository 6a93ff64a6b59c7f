// Pieces of the entry points that others use too. The entry points themselves are declared in import_command.h.
#pragma once

// Reads the settings and sets the operator machine up as CheckFile leaves it for an empty document, with no command
// queued.
void PrepareOperatorMachine();
