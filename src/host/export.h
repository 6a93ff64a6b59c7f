// What a shared library shows although it hides the rest.
#pragma once

#define HOST_VISIBLE __attribute__((visibility("default")))

// An inline function that every module that includes its header carries and shows.
#define HOST_INLINE __attribute__((used, visibility("default"))) inline
