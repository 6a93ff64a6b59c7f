#include "tools/option_values.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "headless_host/headless_host.h"
#include "headless_host/text.h"

namespace {

struct Setting {
  std::string_view section, key;
  int value;
};

// The section ends at the first `/`, the key at the last `=`.
std::optional<Setting> ParseSetting(std::string_view text) {
  const std::size_t slash = text.find('/');
  const std::size_t equals = text.rfind('=');
  if (slash == text.npos || equals == text.npos || equals < slash) return std::nullopt;
  Setting setting{text.substr(0, slash), text.substr(slash + 1, equals - slash - 1), 0};
  if (setting.section.empty() || setting.key.empty()) return std::nullopt;
  const std::string_view digits = text.substr(equals + 1);
  const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), setting.value);
  if (end.ec != std::errc() || end.ptr != digits.data() + digits.size()) return std::nullopt;
  return setting;
}

}  // namespace

void AddSettingsOption(CLI::App& app, std::vector<std::string>& settings) {
  app.add_option("--set", settings, "A value in the settings store, such as ZENTAL/Units=0; may be repeated")
      ->type_name("SECTION/KEY=N")
      ->expected(1)
      ->allow_extra_args(false)  // what follows is the document
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->check([](const std::string& text) {
        return ParseSetting(text) ? std::string()
                                  : "'" + text + "' is not of the form SECTION/KEY=N with a 32-bit integer";
      });
}

void StoreSettings(const std::vector<std::string>& settings) {
  for (const std::string& text : settings) {
    if (const auto setting = ParseSetting(text)) {
      SetHostSetting(headless::TextFromUtf8(setting->section), headless::TextFromUtf8(setting->key), setting->value);
    }
  }
}

CLI::Option* AddNumberOption(CLI::App& app, const std::string& name, double& number, const std::string& description) {
  // The library's own conversion goes through a longer type and so rounds twice.
  return app.add_option_function<std::string>(
      name,
      [name, &number](const std::string& text) {
        const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
        if (end.ec != std::errc() || end.ptr != text.data() + text.size() || !std::isfinite(number)) {
          throw CLI::ValidationError(name, "'" + text + "' is not a number");
        }
      },
      description);
}

std::optional<int> ParseArguments(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitDone : kExitUsage;
  }
  return std::nullopt;
}
