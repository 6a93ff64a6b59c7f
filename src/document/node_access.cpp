#include "document/node_access.h"

#include <stdexcept>

#include "run/number_text.h"
#include "run/text_match.h"

namespace {

void Check(HRESULT status, const char* interfaceName) {
  if (status < 0) throw DocumentError(status, interfaceName);
}

// A reference to an interface of the document, given back at the end of the scope.
template <class Interface>
class Held {
 public:
  Held() = default;
  ~Held() {
    if (pointer_) pointer_->Release();
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  Interface** Out() { return &pointer_; }
  explicit operator bool() const { return pointer_; }
  Interface* operator->() const { return pointer_; }

 private:
  Interface* pointer_ = nullptr;
};

struct UnitName {
  char16_t letters[3];
  bool anyCase;
  UnitCode code;
};

constexpr UnitName kUnits[] = {
    {u"mm", true, kMillimetre}, {u"in", true, kInch}, {u"cm", false, kCentimetre}, {u"pt", false, kPointUnit},
    {u"px", false, kPixel},     {u"em", false, kEm},  {u"ex", false, kEx},         {u"pc", false, kPica},
};

UnitCode UnitOf(char16_t first, char16_t second) {
  for (const UnitName& name : kUnits) {
    const bool same = name.anyCase ? LowerUnit(first) == name.letters[0] && LowerUnit(second) == name.letters[1]
                                   : first == name.letters[0] && second == name.letters[1];
    if (same) return name.code;
  }
  return kNoUnit;
}

}  // namespace

std::u16string_view GetNodeName(IXMLDOMNode* node) {
  std::u16string_view name;
  node->get_baseName(&name);
  return name;
}

std::u16string_view GetNodeAttribute(IXMLDOMNode* node, std::u16string_view name) {
  std::u16string_view text;
  if (!node) return text;
  Held<IXMLDOMNamedNodeMap> attributes;
  node->get_attributes(attributes.Out());
  if (!attributes) return text;
  Held<IXMLDOMNode> item;
  Check(attributes->getNamedItem(name, item.Out()), "IXMLDOMNamedNodeMap");
  if (item) item->get_text(&text);
  return text;
}

IXMLDOMNode* ChildNodeList::At(std::int32_t i) const {
  if (i < 0 || static_cast<std::size_t>(i) >= nodes_.size()) throw std::out_of_range("invalid vector<T> subscript");
  return nodes_[static_cast<std::size_t>(i)];
}

void ChildNodeList::Keep(std::int32_t i) { nodes_[static_cast<std::size_t>(i)] = nullptr; }

void ChildNodeList::Release() {
  for (IXMLDOMNode* node : nodes_) {
    if (node) node->Release();
  }
  nodes_.clear();
  length_ = 0;
}

void CollectChildNodes(IXMLDOMNode* node, ChildNodeList& list) {
  list.Release();
  Held<IXMLDOMNodeList> children;
  Check(node->get_childNodes(children.Out()), "IXMLDOMNode");
  if (!children) return;
  children->get_length(&list.length_);
  list.nodes_.reserve(static_cast<std::size_t>(list.length_ > 0 ? list.length_ : 0));
  for (std::int32_t i = 0; i < list.length_; ++i) {
    IXMLDOMNode* item = nullptr;
    children->get_item(i, &item);
    if (item) list.nodes_.push_back(item);
  }
}

std::size_t ScanLength(std::u16string_view text, GrowingText& number, UnitCode* unit) {
  bool seenPoint = false;
  bool seenCharacter = false;
  bool seenExponent = false;
  std::size_t consumed = 0;
  std::size_t i = 0;
  const auto at = [text](std::size_t index) { return index < text.size() ? text[index] : u'\0'; };
  number.Clear();
  while (true) {
    for (; at(i) == u' '; ++i) ++consumed;
    const std::size_t first = i;
    for (;; ++i) {
      const char16_t c = at(i);
      const bool exponent = c == u'E' || c == u'e';
      if (exponent) seenExponent = true;
      if (!exponent && (c < u'*' || c > u'9' || c == u',')) break;
      if (c == u'.' && seenPoint) break;
      if (c == u'-' && seenCharacter && !seenExponent) break;
      seenCharacter = true;
      if (c == u'.') seenPoint = true;
    }
    number.Append(text.substr(first, i - first));
    consumed += i - first;
    if (at(i) != u'\t' && at(i) != u'\n' && at(i) != u'\r') break;
    ++i;
  }
  while (at(i) == u' ') ++i;
  *unit = UnitOf(at(i), at(i + 1));
  return consumed;
}
