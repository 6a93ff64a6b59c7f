// The state of the one import that a loaded instance serves: plain structs, one for each concern, composed into one
// global. Every value stands here as it is when the library is loaded.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "document/definitions.h"
#include "document/load.h"
#include "document/node_access.h"
#include "host/allocator_link.h"
#include "host/composer.h"
#include "host/font_manager_link.h"
#include "images/image_state.h"
#include "operators/clip.h"
#include "operators/graphics_state.h"
#include "operators/operand_stack.h"
#include "operators/path_state.h"
#include "paint/paint_state.h"
#include "platform/xml_document.h"
#include "run/command_queue.h"
#include "run/trace.h"
#include "text/text_state.h"

class POLYGON;

struct ReleaseDocument {
  void operator()(IXMLDOMDocument* document) const { document->Release(); }
};

// A document and the text in which the values of its tree lie.
struct LoadedDocument {
  std::unique_ptr<char16_t[]> text;
  std::unique_ptr<IXMLDOMDocument, ReleaseDocument> document;
};

struct ImportRun {
  ImportRun();
  ~ImportRun();
  ImportRun(const ImportRun&) = delete;
  ImportRun& operator=(const ImportRun&) = delete;

  // Found as the library is loaded, since both queues draw on it; outlives all below.
  HostAllocatorLink allocator;
  FontManagerLibrary fontManager;

  // The document's measures. UnitScale is the factor from the document's numbers to centimetres: a point here, a pixel
  // at 90 per inch with the setting Units, a millimetre by the unit sniffing.
  double DocHeight = 0.0;
  double UnitScale = 0.035277777777777776;
  std::u16string BaseDirectory;  // folder of the input file, with its final separator

  // The document. Texts read from it stay valid until the library is unloaded.
  FileText file;
  IXMLDOMDocument* (*CreateDocument)() = CreateDomDocument;
  // Every document that was loaded: they are kept, since views of their texts and references to their nodes may be
  // anywhere.
  std::deque<LoadedDocument> documents;
  IXMLDOMDocument* DomDocument = nullptr;
  IXMLDOMNode* RootNode = nullptr;  // with one reference
  ChildNodeList NodeList;           // the root's children
  std::int32_t NodeCount = 0;       // as the document says, null items included
  std::int32_t NodeCursor = 0;      // the next node to visit; not reset by CloseFile
  IXMLDOMNode* CurrentNode = nullptr;
  std::uint32_t CursorPrimed = 0;
  DefinitionTables definitions;
  DefinitionGuard definitionGuard;

  // Settings.
  std::int32_t DebugMode = 0;  // 1: the trace is on
  std::int32_t OverprintEnabled = 0;
  std::int32_t GroupsEnabled = 0;
  std::int32_t DefaultWindingRule = 1;
  std::uint8_t UnitsForced = 0;  // the host's units were moved from 301 to 300 for this run

  // The stream.
  CommandQueue commands;
  CommandQueue priority;  // would overtake the other; nothing is pushed here
  TraceLog trace;

  // The operator machine.
  OperandStack operands;
  std::uint32_t skipArrayOpen = 0;  // the next "[" is stepped over
  std::int32_t braceDepth = 0;      // nothing reads it
  GraphicsStateStack graphics;
  PathState path;
  ClipState clip;
  POLYGON* currentPolygon = nullptr;  // under construction, within one operator
  PaintState paint;
  std::vector<NamedGradient> namedGradients;  // nothing in the filter fills it

  // Text and images.
  TextState text;
  std::unique_ptr<CFontReplacement> FontReplacementObject;
  std::int32_t FontManagerLinked = 0;
  ImageState images;

  // What GetFileHandle answers; nothing writes it.
  std::int32_t InputHandle = 0;

  // Of FloatErrorMsg: the setting LogMathErrors, all ones until it has been read, and the nesting of its message.
  std::int32_t logMathErrors = -1;
  std::int32_t floatErrorNesting = 0;
};

extern ImportRun run;

// A fresh run in place of the old one, as after an unload and a load.
void ResetImportRun();
