#include "document/load.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>

#include "document/node_access.h"
#include "filter_limits.h"
#include "platform/host_path.h"
#include "platform/narrow_text.h"
#include "platform/xml_document.h"
#include "run/import_run.h"

namespace {

constexpr double kMillimetreScale = 0.1;

class OpenFile {
 public:
  explicit OpenFile(const char16_t* path) : fd_(OpenHostFileForReading(path, &size_)) {}
  ~OpenFile() {
    if (fd_ >= 0) close(fd_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  int fd() const { return fd_; }
  std::uint64_t size() const { return size_; }

 private:
  std::uint64_t size_ = 0;
  int fd_;
};

// Reads until the bytes are in, the file ends or a read fails, which is an error; `came` counts what came in. The
// remaining count goes down by what was asked for, not by what came.
bool ReadBytes(int fd, char* to, std::size_t size, std::size_t* came) {
  *came = 0;
  for (std::size_t remaining = size; remaining > 0;) {
    const std::size_t asked = std::min(remaining, kMaxReadRequest);
    const ssize_t now = read(fd, to + *came, asked);
    if (now < 0) return false;
    if (now == 0) break;
    *came += static_cast<std::size_t>(now);
    remaining -= asked;
  }
  return true;
}

void KeepText(std::unique_ptr<char[]> text, std::size_t size, std::size_t blockSize) {
  run.file.FileBuffer = std::move(text);
  run.file.FileBufferSize = size;
  run.file.blockSize = blockSize;
}

// The first place of `word` in front of any NUL; null for none.
const char* FindWord(const char* text, std::size_t size, std::string_view word) {
  const std::string_view bytes(text, size);
  const std::size_t found = bytes.find(word);
  if (found == std::string_view::npos || std::memchr(text, 0, found)) return nullptr;
  return text + found;
}

bool IsDigitByte(char c) { return c >= '0' && c <= '9'; }

void Check(HRESULT status) {
  if (Failed(status)) throw DocumentError(status, "IXMLDOMDocument");
}

}  // namespace

bool ReadWholeFile(const char16_t* path) {
  if (!path) return false;
  const OpenFile file(path);
  if (file.fd() < 0) return false;
  const auto size = static_cast<std::size_t>(file.size());
  if (size == 0) return false;
  std::unique_ptr<char[]> block(new (std::nothrow) char[size + 1]);
  if (!block) return false;
  std::size_t came;
  if (!ReadBytes(file.fd(), block.get(), size, &came) || came != size) {
    KeepText(nullptr, 0, 0);
    return false;
  }
  block[size] = 0;
  // What lies behind a NUL is lost at this stage, but the block has room for it.
  const std::size_t length = std::strlen(block.get());
  KeepText(std::move(block), length + 1, size + 1);
  return true;
}

bool ReadForLoading(const char16_t* path) {
  const OpenFile file(path);
  if (file.fd() < 0) return true;
  const auto size = static_cast<std::uint32_t>(file.size());
  if (size == 0) return false;
  const std::size_t blockSize = std::size_t{size} + 1;
  // The block of the first read serves again: fresh memory costs as much as the read.
  if (run.file.blockSize < blockSize) KeepText(std::unique_ptr<char[]>(new char[blockSize]), blockSize, blockSize);
  char* const text = run.file.FileBuffer.get();
  std::size_t came;
  ReadBytes(file.fd(), text, size, &came);
  std::memset(text + came, 0, blockSize - came);
  BlankDoctype(text, size);
  if (IsInMillimetres(text, size)) run.UnitScale = kMillimetreScale;
  run.file.FileBufferSize = blockSize;
  return true;
}

void BlankDoctype(char* text, std::size_t size) {
  const char* const found = FindWord(text, size, "!DOCTYPE");
  if (!found) return;
  const char* const end = text + size;
  char* c = text + (found - text);
  while (c > text && *c != '<') --c;
  for (; c != end && *c != 0 && *c != '>'; ++c) *c = ' ';
  if (c != end && *c != 0) *c = '\n';
}

bool IsInMillimetres(const char* text, std::size_t size) {
  constexpr std::string_view kWord = "width";
  const char* c = FindWord(text, size, kWord);
  if (!c) return false;
  const char* const end = text + size;
  c += kWord.size();
  while (c != end && *c != 0 && !IsDigitByte(*c)) ++c;
  while (c != end && (IsDigitByte(*c) || *c == '.')) ++c;
  while (c != end && *c == ' ') ++c;
  return c != end && *c == 'm';
}

IXMLDOMNode* LoadDocument() {
  const std::string_view bytes(run.file.FileBuffer.get());
  if (bytes.size() > kMaxDocumentBytes) throw DocumentError(kInvalidArgument, "IXMLDOMDocument");
  run.documents.emplace_back();
  LoadedDocument& loaded = run.documents.back();
  try {
    loaded.text.reset(new char16_t[bytes.size()]);
  } catch (const std::bad_alloc&) {
    throw DocumentError(kOutOfMemory, "IXMLDOMDocument");
  }

  WidenNarrow(bytes, loaded.text.get());

  run.DomDocument = nullptr;
  loaded.document.reset(run.CreateDocument());
  IXMLDOMDocument* const document = loaded.document.get();
  if (!document) throw DocumentError(kNullPointer, "IXMLDOMDocument");
  bool validate = false;
  document->get_validateOnParse(&validate);
  document->put_validateOnParse(true);
  document->put_async(false);
  IXMLDOMNode* doctype = nullptr;
  document->get_doctype(&doctype);
  if (doctype) doctype->Release();
  bool success = false;
  Check(document->loadXML({loaded.text.get(), bytes.size()}, &success));
  if (success) {
    IXMLDOMNode* element = nullptr;
    Check(document->get_documentElement(&element));
    run.DomDocument = document;
    return element;
  }
  IXMLDOMParseError* error = nullptr;
  document->get_parseError(&error);
  if (error) {
    std::u16string_view dropped;
    std::int32_t code;
    error->get_srcText(&dropped);
    error->get_reason(&dropped);
    error->get_errorCode(&code);
    error->Release();
  }
  run.documents.pop_back();
  return nullptr;
}

std::u16string_view GetRootHeight() { return GetNodeAttribute(run.RootNode, u"height"); }
