/* The command stream for readers in C, and as the model of a binding for other languages: the record, the command
 * codes, the payload records and the functions by which a stream is read. C++ programs include "run/import_command.h",
 * which says the same with the host's classes.
 *
 * Coordinates are centimetres with y pointing up. Colours are 0x00BBGGRR; 0xFFFFFFFF in KEY_FILL and KEY_OUTL means
 * that nothing is painted. Packed records have fields at odd offsets: copy a record or read its fields as values, and
 * never take the address of a field.
 */
#ifndef SVGIMPORT_STREAM_H
#define SVGIMPORT_STREAM_H

#ifdef __cplusplus
#error "C++ programs include run/import_command.h instead"
#endif

#include <stddef.h>
#include <stdint.h>

enum CommandKey {
  KEY_NULL = 0,   /* no fact */
  KEY_BEZI = 3,   /* BezierRecord: one cubic segment */
  KEY_CNST = 5,   /* value, line join: 0 round, 1 bevel, 2 miter */
  KEY_EGRP = 8,   /* value 1: end of a group */
  KEY_ELLI = 9,   /* never sent */
  KEY_ENDF = 10,  /* end of the file */
  KEY_ENDP = 11,  /* end of the open path */
  KEY_FILL = 12,  /* value: fill colour */
  KEY_LINE = 17,  /* LineRecord: one straight segment */
  KEY_LNST = 18,  /* value, line cap: 0 butt, 1 square, 2 round */
  KEY_MLIM = 21,  /* value: miter limit times 100 */
  KEY_WRUL = 23,  /* value, winding rule: 1 non-zero, 0 even-odd */
  KEY_OUTL = 24,  /* value: outline colour */
  KEY_PARA = 27,  /* ParagraphRecord: a composed text block */
  KEY_PATH = 28,  /* start of a path */
  KEY_PLYR = 29,  /* PolygonRecord: a finished polygon */
  KEY_SGRP = 36,  /* value 1: start of a group */
  KEY_WIDT = 43,  /* a double, line width in centimetres; size 8 or 0 */
  KEY_PFDF = 46,  /* FillDefinition of a pattern, first of the pair */
  KEY_FDEF = 47,  /* FillDefinition of a flat layer colour or a gradient */
  KEY_CLIP = 48,  /* value: 1 starts clip geometry, 0 ends it */
  KEY_DOCP = 49,  /* value: 1 clipped content begins, 0 it has ended */
  KEY_PAGN = 50,  /* never sent */
  KEY_GNRC = 97,  /* GenericRecord: an image */
  KEY_THST = 104, /* value, thickness state: 1 none, 2 hairline, 3 thick */
  KEY_NOTL = 110, /* a colour object of the host: outline of the path just ended */
  KEY_NFIL = 111, /* a colour object of the host: fill of the path just ended */
  KEY_SPFL = 114, /* a spot fill object of the host */
  KEY_QXON = 119, /* never sent */
  KEY_LYOT = 123, /* an overprint object of the host, for the fill */
  KEY_LIOT = 124, /* an overprint object of the host, for the stroke */
  KEY_PFOL = 127, /* the FillDefinition of the KEY_PFDF before it */
  KEY_ECGR = 135, /* value 1: end of a clip group */
  KEY_SCGR = 136, /* value 1: start of a clip group */
  KEY_TSPY = 155  /* a transparency object of the host */
};

typedef struct ImportCommand {
  uint32_t key;  /* enum CommandKey */
  uint32_t size; /* bytes of what `data` points to; 0 for a value and for an object */
  union {
    int32_t value;
    void* data;
    unsigned char bytes[24];
  };
} ImportCommand;

/* Maps (x, y) to (a*x + c*y + e, b*x + d*y + f). */
typedef struct TM {
  double a, b, c, d, e, f;
} TM;

#pragma pack(push, 1)

typedef struct LineRecord {
  unsigned char reserved[16]; /* not written */
  double x0, y0;
  double x1, y1;
} LineRecord;

typedef struct BezierRecord {
  unsigned char reserved0[16];
  double x0, y0; /* start */
  double x1, y1; /* first control */
  double x2, y2; /* second control */
  double x3, y3; /* end */
  unsigned char reserved1[28];
} BezierRecord;

typedef struct PolygonSide {
  double x;
  double y;
  uint32_t flags; /* bit 0: closes the outline; bit 1: a sample of a curve */
} PolygonSide;

/* A host object. CountPolygonSides gives the number of `sides`. */
typedef struct PolygonRecord {
  void* classTable;
  unsigned char hostData0[8];
  uint32_t flags; /* bit 0: set; bit 1: at least one side is a curve side */
  double scaleX;
  double scaleY;
  unsigned char hostData1[8];
  PolygonSide* sides;
  unsigned char hostData2[32];
} PolygonRecord;

typedef struct ParagraphRecord {
  unsigned char reserved[16]; /* not written */
  uint32_t paragraphTag;
  void* paragraph; /* a host object */
} ParagraphRecord;

typedef struct GenericRecord {
  unsigned char reserved[16]; /* not written */
  void* bitmap;               /* a host object */
} GenericRecord;

#define SVGIMPORT_MAX_STOPS 101
#define SVGIMPORT_TILE_PATH_UNITS 128

enum FillType { kFlatFill = 1, kRadialFill = 5, kPatternFill = 10, kLinearFill = 15 };

typedef struct GradientPart {
  uint32_t gradientForm; /* 3 two colours, 1 stop list */
  uint32_t gradientFlag; /* 1 */
  uint32_t stopListFlag; /* 0 two colours, 1 stop list */
  unsigned char reserved0[4];
  double colourA[3]; /* two colours only: red, green, blue, 0 to 255 */
  unsigned char reserved1[24];
  double colourB[3];
  unsigned char reserved2[24];
  uint16_t stopListStart; /* 0 */
  unsigned char reserved3[6];
  double midPoint;     /* 0.5 */
  uint16_t stopListOn; /* 1 with a stop list */
  unsigned char reserved4[2];
  uint32_t stopCount;
  uint32_t stopColours[SVGIMPORT_MAX_STOPS];
  int32_t stopPositions[SVGIMPORT_MAX_STOPS]; /* percent */
  double angle;                               /* degrees */
} GradientPart;

typedef struct PatternPart {
  unsigned char reserved0[8];
  uint16_t tilePath[SVGIMPORT_TILE_PATH_UNITS]; /* UTF-16, NUL-terminated */
  uint32_t tileColour;                          /* 0xFFFFFF */
  uint32_t tileColourOn;                        /* 1 */
  double tileScaleX;                            /* 1.0 */
  double tileScaleY;                            /* 1.0 */
} PatternPart;

typedef struct FillDefinition {
  uint32_t fillClass; /* 0 flat layer colour, 4 gradient or pattern */
  TM inverseMatrix;   /* host space to fill space */
  TM forwardMatrix;   /* fill space to host space */
  uint32_t fillType;  /* enum FillType */
  union {
    GradientPart gradient;
    PatternPart pattern;
    unsigned char part[1048];
  };
  double fillScale; /* flat: 1.0; pattern: -1.0; gradient: minus its length in centimetres */
  unsigned char reserved0[40];
  double tileHeight; /* pattern only */
  unsigned char reserved1[8];
} FillDefinition;

#pragma pack(pop)

_Static_assert(sizeof(ImportCommand) == 32, "ImportCommand");
_Static_assert(offsetof(ImportCommand, value) == 8 && offsetof(ImportCommand, data) == 8, "ImportCommand");
_Static_assert(sizeof(TM) == 48, "TM");
_Static_assert(sizeof(LineRecord) == 48 && offsetof(LineRecord, x0) == 16, "LineRecord");
_Static_assert(sizeof(BezierRecord) == 108 && offsetof(BezierRecord, y3) == 72, "BezierRecord");
_Static_assert(sizeof(PolygonSide) == 20, "PolygonSide");
_Static_assert(sizeof(PolygonRecord) == 84 && offsetof(PolygonRecord, sides) == 44, "PolygonRecord");
_Static_assert(sizeof(ParagraphRecord) == 28 && offsetof(ParagraphRecord, paragraph) == 20, "ParagraphRecord");
_Static_assert(sizeof(GenericRecord) == 24 && offsetof(GenericRecord, bitmap) == 16, "GenericRecord");
_Static_assert(offsetof(FillDefinition, gradient) == 104 && offsetof(FillDefinition, pattern) == 104, "FillDefinition");
_Static_assert(offsetof(FillDefinition, gradient.angle) == 1048, "FillDefinition");
_Static_assert(offsetof(FillDefinition, pattern.tileScaleY) == 384, "FillDefinition");
_Static_assert(sizeof(FillDefinition) == 1216 && offsetof(FillDefinition, fillScale) == 1152, "FillDefinition");

/* The entry points of the filter, to be looked up with dlsym. Paths are UTF-16. */
typedef int (*CheckFileFunction)(uintptr_t reserved1, uintptr_t reserved2, const uint16_t* path);
typedef ImportCommand (*GetImportCommandFunction)(void);
typedef intptr_t (*GetFileHandleFunction)(void);
typedef int (*CloseFileFunction)(void);

/* Functions of the reference host, libsvgimport-host. */

/* Frees the payload of a record that the filter returned. A KEY_PFDF keeps its payload until its KEY_PFOL is given. */
void ReleaseImportCommand(const ImportCommand* command);
/* The number of sides of a polygon. */
int64_t CountPolygonSides(const PolygonRecord* polygon);

#endif
