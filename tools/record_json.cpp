#include "tools/record_json.h"

#include <algorithm>
#include <cstring>

#include "headless_host/headless_host.h"
#include "headless_host/inspection.h"
#include "tools/json_values.h"

struct RecordJson::Buffer {
  rapidjson::StringBuffer text;
  JsonWriter writer{text};
};

namespace {

enum class Form {
  kNone,
  kValue,
  kWidth,
  kLine,
  kBezier,
  kPolygon,
  kFill,
  kTransparency,
  kBitmap,
  kParagraph,
  kColour,
  kOverPrint,
  kSpotFill
};

struct CommandRow {
  std::uint32_t key;
  std::string_view name;
  Form form;
};

constexpr CommandRow kCommands[] = {
    {KEY_NULL, "KEY_NULL", Form::kNone},         {KEY_BEZI, "KEY_BEZI", Form::kBezier},
    {KEY_CNST, "KEY_CNST", Form::kValue},        {KEY_EGRP, "KEY_EGRP", Form::kValue},
    {KEY_ELLI, "KEY_ELLI", Form::kNone},         {KEY_ENDF, "KEY_ENDF", Form::kNone},
    {KEY_ENDP, "KEY_ENDP", Form::kNone},         {KEY_FILL, "KEY_FILL", Form::kValue},
    {KEY_LINE, "KEY_LINE", Form::kLine},         {KEY_LNST, "KEY_LNST", Form::kValue},
    {KEY_MLIM, "KEY_MLIM", Form::kValue},        {KEY_WRUL, "KEY_WRUL", Form::kValue},
    {KEY_OUTL, "KEY_OUTL", Form::kValue},        {KEY_PARA, "KEY_PARA", Form::kParagraph},
    {KEY_PATH, "KEY_PATH", Form::kNone},         {KEY_PLYR, "KEY_PLYR", Form::kPolygon},
    {KEY_SGRP, "KEY_SGRP", Form::kValue},        {KEY_WIDT, "KEY_WIDT", Form::kWidth},
    {KEY_PFDF, "KEY_PFDF", Form::kFill},         {KEY_FDEF, "KEY_FDEF", Form::kFill},
    {KEY_CLIP, "KEY_CLIP", Form::kValue},        {KEY_DOCP, "KEY_DOCP", Form::kValue},
    {KEY_PAGN, "KEY_PAGN", Form::kValue},        {KEY_GNRC, "KEY_GNRC", Form::kBitmap},
    {KEY_THST, "KEY_THST", Form::kValue},        {KEY_NOTL, "KEY_NOTL", Form::kColour},
    {KEY_NFIL, "KEY_NFIL", Form::kColour},       {KEY_SPFL, "KEY_SPFL", Form::kSpotFill},
    {KEY_QXON, "KEY_QXON", Form::kNone},         {KEY_LYOT, "KEY_LYOT", Form::kOverPrint},
    {KEY_LIOT, "KEY_LIOT", Form::kOverPrint},    {KEY_PFOL, "KEY_PFOL", Form::kFill},
    {KEY_ECGR, "KEY_ECGR", Form::kValue},        {KEY_SCGR, "KEY_SCGR", Form::kValue},
    {KEY_TSPY, "KEY_TSPY", Form::kTransparency},
};

const CommandRow* FindCommand(std::uint32_t key) {
  const auto* row =
      std::find_if(std::begin(kCommands), std::end(kCommands), [&](const CommandRow& r) { return r.key == key; });
  return row == std::end(kCommands) ? nullptr : row;
}

void Key(JsonWriter& writer, std::string_view name) {
  writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void Number(JsonWriter& writer, std::string_view name, double value) {
  Key(writer, name);
  WriteNumber(writer, value);
}

void Unsigned(JsonWriter& writer, std::string_view name, std::uint32_t value) {
  Key(writer, name);
  writer.Uint(value);
}

void Integer(JsonWriter& writer, std::string_view name, std::int32_t value) {
  Key(writer, name);
  writer.Int(value);
}

void Text(JsonWriter& writer, std::string_view name, std::u16string_view value) {
  Key(writer, name);
  WriteText(writer, value);
}

void Numbers(JsonWriter& writer, std::string_view name, std::initializer_list<double> values) {
  Key(writer, name);
  WriteNumbers(writer, {values.begin(), values.size()});
}

void Matrix(JsonWriter& writer, std::string_view name, TM matrix) {
  Numbers(writer, name, {matrix.a, matrix.b, matrix.c, matrix.d, matrix.e, matrix.f});
}

template <class Marker>
void Markers(JsonWriter& writer, ArrayView<Marker> markers, int Marker::*level) {
  Key(writer, "markers");
  writer.StartArray();
  for (const Marker& marker : markers) {
    writer.StartArray();
    writer.Int(marker.position);
    writer.Int(marker.*level);
    writer.EndArray();
  }
  writer.EndArray();
}

// A copy of a packed record, whose fields can then be read at their places whatever the address of the original.
template <class Record>
Record CopyOf(const void* data) {
  Record record;
  std::memcpy(&record, data, sizeof record);
  return record;
}

void WritePoints(JsonWriter& writer, std::initializer_list<double> coordinates) {
  Key(writer, "points");
  writer.StartArray();
  for (const double* at = coordinates.begin(); at != coordinates.end(); at += 2) WriteNumbers(writer, {at, 2});
  writer.EndArray();
}

void WritePolygon(JsonWriter& writer, const POLYGON& polygon) {
  Unsigned(writer, "flags", polygon.flags);
  Numbers(writer, "scale", {polygon.scaleX, polygon.scaleY});
  Key(writer, "sides");
  writer.StartArray();
  for (const PolygonSide& side : ViewSides(polygon)) {
    writer.StartArray();
    WriteNumber(writer, side.x);
    WriteNumber(writer, side.y);
    writer.Uint(side.flags);
    writer.EndArray();
  }
  writer.EndArray();
}

void WriteGradientPart(JsonWriter& writer, const GradientPart& gradient) {
  constexpr std::uint32_t kTwoColours = 3;
  constexpr std::uint32_t kStopList = 1;
  Unsigned(writer, "gradientForm", gradient.gradientForm);
  Unsigned(writer, "gradientFlag", gradient.gradientFlag);
  Unsigned(writer, "stopListFlag", gradient.stopListFlag);
  Number(writer, "midPoint", gradient.midPoint);
  Number(writer, "angle", gradient.angle);
  if (gradient.gradientForm == kTwoColours) {
    Numbers(writer, "colourA", {gradient.colourA[0], gradient.colourA[1], gradient.colourA[2]});
    Numbers(writer, "colourB", {gradient.colourB[0], gradient.colourB[1], gradient.colourB[2]});
  } else if (gradient.gradientForm == kStopList) {
    Unsigned(writer, "stopListStart", gradient.stopListStart);
    Unsigned(writer, "stopListOn", gradient.stopListOn);
    Key(writer, "stops");
    writer.StartArray();
    for (std::uint32_t i = 0; i < std::min(std::uint32_t{gradient.stopCount}, kMaxStops); ++i) {
      writer.StartArray();
      writer.Uint(gradient.stopColours[i]);
      writer.Int(gradient.stopPositions[i]);
      writer.EndArray();
    }
    writer.EndArray();
  }
}

void WritePatternPart(JsonWriter& writer, const PatternPart& pattern, double tileHeight) {
  const std::u16string_view field(pattern.tilePath, kTilePathUnits);
  Text(writer, "tilePath", ShownPath(field.substr(0, field.find(u'\0'))));
  Unsigned(writer, "tileColour", pattern.tileColour);
  Unsigned(writer, "tileColourOn", pattern.tileColourOn);
  Number(writer, "tileScaleX", pattern.tileScaleX);
  Number(writer, "tileScaleY", pattern.tileScaleY);
  Number(writer, "tileHeight", tileHeight);
}

void WriteFill(JsonWriter& writer, const FillDefinition& fill) {
  writer.StartObject();
  Unsigned(writer, "fillClass", fill.fillClass);
  Matrix(writer, "inverseMatrix", fill.inverseMatrix);
  Matrix(writer, "forwardMatrix", fill.forwardMatrix);
  Unsigned(writer, "fillType", fill.fillType);
  Number(writer, "fillScale", fill.fillScale);
  if (fill.fillType == kRadialFill || fill.fillType == kLinearFill) {
    WriteGradientPart(writer, fill.gradient);
  } else if (fill.fillType == kPatternFill) {
    WritePatternPart(writer, fill.pattern, fill.tileHeight);
  }
  writer.EndObject();
}

void WriteTransparency(JsonWriter& writer, const TransparencyView& transparency) {
  writer.StartObject();
  Integer(writer, "type", transparency.type);
  if (transparency.type == kUniformTransparency) {
    Unsigned(writer, "opacity", transparency.opacity);
  } else {
    Matrix(writer, "matrix", transparency.worldToFill);
    Number(writer, "length", transparency.length);
    Number(writer, "angle", transparency.angle);
    Markers(writer, transparency.markers, &CTransMarker::opacity);
  }
  writer.EndObject();
}

void WriteBitmap(JsonWriter& writer, const BitmapView& bitmap) {
  writer.StartObject();
  Text(writer, "path", ShownPath(bitmap.path));
  Number(writer, "placedWidth", bitmap.placedWidth);
  Number(writer, "placedHeight", bitmap.placedHeight);
  Number(writer, "placedX", bitmap.placedX);
  Matrix(writer, "placement", bitmap.placement);
  writer.EndObject();
}

void WriteParagraph(JsonWriter& writer, const ParagraphView& paragraph) {
  writer.StartObject();
  Unsigned(writer, "tag", paragraph.tag);
  Numbers(writer, "position", {paragraph.position.x, paragraph.position.y});
  Key(writer, "justification");
  if (paragraph.justification) {
    writer.Int(*paragraph.justification);
  } else {
    writer.Null();
  }
  Numbers(writer, "origin", {paragraph.originX, paragraph.originY});
  Number(writer, "height", paragraph.height);
  Integer(writer, "charScale", paragraph.charScale);
  Unsigned(writer, "fontCode", paragraph.fontCode);
  Unsigned(writer, "replacedFontId", paragraph.replacedFontId);
  Integer(writer, "compression", paragraph.compression);
  Integer(writer, "lineFlags", paragraph.lineFlags);
  Unsigned(writer, "lineMode", paragraph.lineMode);
  Number(writer, "listMeasure", paragraph.listMeasure);
  Integer(writer, "statusLimit", paragraph.statusLimit);
  Integer(writer, "paragraphOption", paragraph.paragraphOption);
  Matrix(writer, "placement", paragraph.placement);
  Key(writer, "runs");
  writer.StartArray();
  for (const TextRunView& run : paragraph.runs) {
    writer.StartObject();
    Text(writer, "text", run.text);
    Key(writer, "font");
    if (run.font) {
      WriteText(writer, *run.font);
    } else {
      writer.Null();
    }
    Number(writer, "height", run.height);
    writer.EndObject();
  }
  writer.EndArray();
  writer.EndObject();
}

void WriteColour(JsonWriter& writer, const ColourView& colour) {
  writer.StartObject();
  Unsigned(writer, "id", colour.id);
  Integer(writer, "space", colour.space);
  Integer(writer, "correction", colour.correction);
  Integer(writer, "reflectivity", colour.reflectivity);
  Key(writer, "components");
  WriteNumbers(writer, {colour.components, static_cast<std::size_t>(colour.componentCount)});
  Key(writer, "tint");
  if (colour.tint) {
    WriteNumber(writer, *colour.tint);
  } else {
    writer.Null();
  }
  Key(writer, "name");
  if (colour.name) {
    WriteText(writer, *colour.name);
  } else {
    writer.Null();
  }
  if (colour.cartridge) Integer(writer, "cartridge", *colour.cartridge);
  writer.EndObject();
}

void WriteOverPrint(JsonWriter& writer, const OverPrintView& overPrint) {
  writer.StartObject();
  Integer(writer, "type", overPrint.type);
  Key(writer, "flag");
  writer.Bool(overPrint.flag);
  writer.EndObject();
}

void WriteSpotFill(JsonWriter& writer, const SpotFillView& fill) {
  writer.StartObject();
  Number(writer, "angle", fill.angle);
  Number(writer, "xOffset", fill.xOffset);
  Number(writer, "yOffset", fill.yOffset);
  Matrix(writer, "matrix", fill.worldToFill);
  Key(writer, "from");
  WriteColour(writer, fill.from);
  Key(writer, "to");
  WriteColour(writer, fill.to);
  Integer(writer, "duotone", fill.duotone);
  Number(writer, "lengthRatio", fill.lengthRatio);
  Markers(writer, fill.markers, &CSpotMarker::tint);
  writer.EndObject();
}

// The member that holds the payload of a record with this form; empty for a form whose members stand in the record
// itself.
std::string_view PayloadMember(Form form) {
  switch (form) {
    case Form::kWidth:
      return "width";
    case Form::kFill:
      return "fill";
    case Form::kTransparency:
      return "transparency";
    case Form::kBitmap:
      return "bitmap";
    case Form::kParagraph:
      return "paragraph";
    case Form::kColour:
      return "colour";
    case Form::kOverPrint:
      return "overprint";
    case Form::kSpotFill:
      return "spotFill";
    default:
      return {};
  }
}

void WritePayload(JsonWriter& writer, Form form, const void* data) {
  switch (form) {
    case Form::kWidth:
      WriteNumber(writer, CopyOf<double>(data));
      break;
    case Form::kLine: {
      const auto line = CopyOf<LineRecord>(data);
      WritePoints(writer, {line.x0, line.y0, line.x1, line.y1});
      break;
    }
    case Form::kBezier: {
      const auto curve = CopyOf<BezierRecord>(data);
      WritePoints(writer, {curve.x0, curve.y0, curve.x1, curve.y1, curve.x2, curve.y2, curve.x3, curve.y3});
      break;
    }
    case Form::kPolygon:
      WritePolygon(writer, *static_cast<const POLYGON*>(data));
      break;
    case Form::kFill:
      WriteFill(writer, CopyOf<FillDefinition>(data));
      break;
    case Form::kTransparency:
      WriteTransparency(writer, ViewTransparency(*static_cast<const CQXTransparency*>(data)));
      break;
    case Form::kBitmap: {
      const auto record = CopyOf<GenericRecord>(data);
      if (record.bitmap == nullptr) {
        writer.Null();
      } else {
        WriteBitmap(writer, ViewBitmap(*record.bitmap));
      }
      break;
    }
    case Form::kParagraph: {
      const auto paragraph = ViewParagraph(CopyOf<ParagraphRecord>(data).paragraph);
      if (paragraph) {
        WriteParagraph(writer, *paragraph);
      } else {
        writer.Null();
      }
      break;
    }
    case Form::kColour:
      WriteColour(writer, ViewColour(*static_cast<const CQXFullColor*>(data)));
      break;
    case Form::kOverPrint:
      WriteOverPrint(writer, ViewOverPrint(*static_cast<const CQXOverPrint*>(data)));
      break;
    case Form::kSpotFill:
      WriteSpotFill(writer, ViewSpotFill(*static_cast<const CQXLinearSpotFill*>(data)));
      break;
    case Form::kNone:
    case Form::kValue:
      break;
  }
}

}  // namespace

RecordJson::RecordJson() : buffer_(std::make_unique<Buffer>()) {}
RecordJson::~RecordJson() = default;

std::string_view RecordJson::Line(const ImportCommand& command) {
  JsonWriter& writer = buffer_->writer;
  buffer_->text.Clear();
  writer.Reset(buffer_->text);

  const CommandRow* row = FindCommand(command.key);
  const Form form = row == nullptr ? Form::kNone : row->form;
  writer.StartObject();
  Unsigned(writer, "key", command.key);
  const std::string_view name = CommandName(command.key);
  Key(writer, "name");
  writer.String(name.data(), static_cast<rapidjson::SizeType>(name.size()));
  Unsigned(writer, "size", command.size);
  if (form == Form::kValue) {
    Unsigned(writer, "value", static_cast<std::uint32_t>(command.value));
  } else if (form != Form::kNone) {
    const std::string_view member = PayloadMember(form);
    if (!member.empty()) Key(writer, member);
    if (command.data != nullptr) {
      WritePayload(writer, form, command.data);
    } else if (!member.empty()) {
      writer.Null();
    }
  }
  writer.EndObject();
  return {buffer_->text.GetString(), buffer_->text.GetSize()};
}

std::string_view CommandName(std::uint32_t key) {
  const CommandRow* row = FindCommand(key);
  return row == nullptr ? std::string_view("KEY_UNKNOWN") : row->name;
}
