/* The layout of the records as a program in C sees it. */
#include "stream_layout.h"

#include <svgimport/stream.h>

/* What the host calls POLYGON is a class, of which C sees the fields. */
typedef PolygonRecord POLYGON;

#define RECORD(record) {#record, "", 0, sizeof(record)},
#define FIELD(record, field) {#record, #field, offsetof(record, field), sizeof(((record*)0)->field)},

static const struct StreamField fields[] = {
#include "stream_fields.inc"
    {0, 0, 0, 0}};

const struct StreamField* StreamFieldsInC(void) { return fields; }
