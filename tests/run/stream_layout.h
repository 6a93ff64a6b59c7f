/* Where the fields of the stream's records stand, as one of the headers has them. Read by C and by C++. */
#ifndef SVGIMPORT_TESTS_RUN_STREAM_LAYOUT_H
#define SVGIMPORT_TESTS_RUN_STREAM_LAYOUT_H

#include <stddef.h>

struct StreamField {
  const char* record;
  const char* field; /* empty for the record itself */
  size_t offset, size;
};

#ifdef __cplusplus
extern "C" {
#endif
/* What svgimport/stream.h says; ends with a null record. */
const struct StreamField* StreamFieldsInC(void);
#ifdef __cplusplus
}
#endif

#endif
