#include "tools/report/survey.h"

#include <algorithm>

#include "filter_limits.h"

namespace {

// `sentence` with its placeholders filled.
std::string Fill(std::string_view sentence, std::string_view element, std::string_view detail) {
  std::string filled;
  while (!sentence.empty()) {
    const std::size_t brace = sentence.find('{');
    filled += sentence.substr(0, brace);
    if (brace == sentence.npos) break;
    sentence.remove_prefix(brace);
    const std::size_t end = sentence.find('}') + 1;
    filled += sentence.substr(0, end) == "{element}" ? element : detail;
    sentence.remove_prefix(end);
  }
  return filled;
}

constexpr std::size_t kMostDetail = 120;

}  // namespace

std::string Quoted(const SvgAttribute& attribute) { return attribute.name + "=" + InQuotes(attribute.value); }

const LossKind* LossOfElement(std::string_view element) {
  for (const LossKind& loss : kLosses) {
    if (ListHas(loss.elements, element)) return &loss;
  }
  return nullptr;
}

const LossKind* LossOfProperty(std::string_view property) {
  for (const LossKind& loss : kLosses) {
    if (ListHas(loss.properties, property)) return &loss;
  }
  return nullptr;
}

void DefinitionTable::Record(const SvgNode& node, DefinitionKind kind) {
  std::string id = LowerCase(node.Value("id"));
  id.resize(std::min(id.size(), kMaxIdUnits));
  ids_.try_emplace(id, definitions_.size());
  definitions_.push_back({&node, kind});
}

const Definition* DefinitionTable::FindWhole(std::string_view reference) const {
  const auto found = ids_.find(LowerCase(reference));
  return found == ids_.end() ? nullptr : &definitions_[found->second];
}

const Definition* DefinitionTable::FindByStart(std::string_view reference) const {
  if (reference.empty()) return nullptr;
  const std::string start = LowerCase(reference);
  if (const auto known = foundByStart_.find(start); known != foundByStart_.end()) return &definitions_[known->second];
  std::size_t first = definitions_.size();
  for (auto at = ids_.lower_bound(start); at != ids_.end() && at->first.starts_with(start); ++at) {
    first = std::min(first, at->second);
  }
  if (first == definitions_.size()) return nullptr;
  foundByStart_.emplace(start, first);
  return &definitions_[first];
}

void Survey::Report(const LossKind* kind, const SvgNode& node, int line, std::string detail) {
  std::replace_if(
      detail.begin(), detail.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  if (detail.size() > kMostDetail) {
    std::size_t end = kMostDetail - 3;
    while (end > 0 && (static_cast<unsigned char>(detail[end]) & 0xC0) == 0x80) --end;
    detail.replace(end, detail.npos, "...");
  }
  std::string sentence = Fill(kind->sentence, node.name, detail);
  findings_.push_back({kind, line, node.name, std::string(node.Value("id")), std::move(detail), std::move(sentence)});
}

void Survey::ReportOnce(const LossKind* kind, const SvgNode& node, int line, const std::string& detail) {
  const std::string key = std::to_string(&node - document_.nodes.data()) + ' ' + std::string(kind->name) + ' ' + detail;
  if (reported_.insert(key).second) Report(kind, node, line, detail);
}

void Survey::CollectReferences() {
  for (const SvgNode& node : document_.nodes) {
    if (node.kind != NodeKind::kElement) continue;
    if (const SvgAttribute* id = node.Find("id")) byId_.try_emplace(id->value, &node);
    for (const SvgAttribute& attribute : node.attributes) {
      const std::string_view value = attribute.value;
      if (attribute.name == "href" || attribute.name.ends_with(":href")) {
        if (value.starts_with('#')) referenced_.emplace(value.substr(1));
        continue;
      }
      for (std::size_t at = value.find("url("); at != value.npos; at = value.find("url(", at + 4)) {
        const std::size_t begin = value.find('#', at);
        const std::size_t end = value.find_first_of(")'\"", begin == value.npos ? begin : begin + 1);
        if (begin != value.npos)
          referenced_.emplace(value.substr(begin + 1, end == value.npos ? end : end - begin - 1));
      }
    }
    if (node.name == "style" && !node.foreign) {
      const std::string sheet = CharactersOf(node);
      for (std::size_t at = sheet.find('.'); at != sheet.npos; at = sheet.find('.', at + 1)) {
        const std::size_t end = sheet.find_first_of(" \t\r\n.#:,>+~[{", at + 1);
        styledClasses_.insert(sheet.substr(at + 1, end == sheet.npos ? end : end - at - 1));
      }
    }
  }
  unknownStyleSheet_ = !document_.instructions.empty();
}

// A definition that something refers to and that the walk has not recorded.
void Survey::CheckUnrecordedDefinitions() {
  for (const SvgNode& node : document_.nodes) {
    if (node.kind != NodeKind::kElement || node.foreign || recorded_.contains(&node)) continue;
    if (!ListHas("clipPath pattern linearGradient radialGradient", node.name)) continue;
    const std::string id(node.Value("id"));
    if (!id.empty() && referenced_.contains(id)) {
      Report(Loss("definition-outside-defs"), node, node.line, InQuotes(id));
    }
  }
}

std::vector<Finding> Survey::Run() {
  CollectReferences();
  CheckRoot();
  const SvgNode& root = document_.Root();
  for (const int child : root.children) {
    if (At(child).kind == NodeKind::kElement && At(child).name == "defs") RecordDefinitions(At(child));
  }
  const StatedProperties own = ReadProperties(root);
  CheckUnread(root, own, {});
  WalkChildren(root, Place::kTop, Inherit(root, own, {}, false));
  CheckUnrecordedDefinitions();
  return std::move(findings_);
}
