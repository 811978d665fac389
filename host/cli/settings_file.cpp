#include "cli/settings_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "base/failure.h"
#include "base/text.h"
#include "cli/messages.h"
#include "cli/open_file.h"
#include "cli/suggestion.h"

namespace rt305 {

namespace {

namespace fs = std::filesystem;

constexpr const char* fileName = ".rt305.toml";

const std::vector<std::string>& knownKeys() {
    static const std::vector<std::string> keys{
        "map",     "columns", "gain",   "rate",         "primary",      "secondary", "sqrt2", "encoding",
        "nominal", "wiring",  "type",   "two-currents", "coefficients", "no-deskew", "title", "site",
        "note",    "segment", "source", "gains",        "resistances",  "declared"};
    return keys;
}

/// The file beside the recordings, else in the working folder; empty if there is none. Recordings of several folders
/// may need different ones.
std::string findFile(const std::vector<std::string>& recordings) {
    std::vector<fs::path> folders;
    for (const std::string& recording : recordings) {
        if (const fs::path folder = isFolder(recording) ? fs::path(recording) : fs::path(recording).parent_path();
            recording != "-" && std::find(folders.begin(), folders.end(), folder) == folders.end()) {
            folders.push_back(folder);
        }
    }
    if (folders.size() > 1) {
        failUsage("--settings auto takes the settings of one folder, but the recordings are in several: name a file");
    }
    folders.emplace_back();
    const auto found = std::find_if(folders.begin(), folders.end(),
                                    [](const fs::path& folder) { return isRegularFile(folder / fileName); });
    return found == folders.end() ? "" : (*found / fileName).string();
}

struct Setting {
    std::string key;
    std::string value;  // items of lists and tables with commas between them
};

Setting settingOf(const CLI::ConfigItem& item) {
    const std::string value = CLI::detail::join(item.inputs, ",");
    return item.parents.empty() ? Setting{item.name, value} : Setting{item.parents[0], item.name + "=" + value};
}

std::vector<Setting> readSettings(const std::string& path) {
    std::ifstream file(path);
    if (!file || isFolder(path)) {
        failInput(path + ": " + std::strerror(file ? EISDIR : errno));
    }
    std::vector<Setting> settings;
    for (const CLI::ConfigItem& item : CLI::ConfigTOML().from_config(file)) {
        if (item.name == "++" || item.name == "--") {
            continue;  // begin and end of a table
        }
        const auto [key, value] = settingOf(item);
        if (std::find(knownKeys().begin(), knownKeys().end(), key) == knownKeys().end()) {
            failInput(path + ": there is no setting " + inQuotes(key) + suggestionFor(key, knownKeys()));
        }
        if (!item.parents.empty() && !settings.empty() && settings.back().key == key) {
            settings.back().value += "," + value;
        } else {
            settings.push_back({key, value});
        }
    }
    return settings;
}

/// Whether the command line has the option, or one that excludes it.
bool isGiven(const CLI::Option& option) {
    const auto excluded = option.get_excludes();
    return option.count() > 0 ||
           std::any_of(excluded.begin(), excluded.end(), [](const CLI::Option* other) { return other->count() > 0; });
}

}  // namespace

void applySettings(CLI::App& command) {
    const CLI::Option* const wanted = command.get_option_no_throw("--settings");
    if (wanted == nullptr || wanted->count() == 0) {
        return;
    }
    const auto* const files = command.get_option_no_throw("FILE");
    const std::string name = wanted->results().back();
    const std::string path = name == "auto" ? findFile(files->results()) : name;
    std::vector<std::string> taken;
    for (const auto& [key, value] : path.empty() ? std::vector<Setting>() : readSettings(path)) {
        CLI::Option* const option = command.get_option_no_throw("--" + key);
        const bool isOff = option != nullptr && option->get_items_expected_max() == 0 && value == "false";
        if (option == nullptr || isGiven(*option) || isOff) {
            continue;  // of other commands, or decided
        }
        option->add_result(value);
        try {
            option->run_callback();
        } catch (const std::exception& error) {
            failInput(path + ": " + error.what());
        }
        taken.push_back(key);
    }
    if (!taken.empty()) {
        note("settings of " + path + ": " + joined(taken));
    }
}

}  // namespace rt305
