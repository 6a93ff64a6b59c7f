// What a shared library shows although it hides the rest.
#pragma once

#define HOST_VISIBLE __attribute__((visibility("default")))
