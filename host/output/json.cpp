#include "output/json.h"

#include <algorithm>

#include "base/text_encoding.h"
#include "base/time_stamp.h"
#include "base/version.h"

namespace rt305 {

namespace {

Json orNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

/// Other texts than dates by ISO 8601 become null.
Json dateOrNull(const std::string& text) {
    return text.find('T') == std::string("2020-02-24").size() && parseTimeStamp(text) ? Json(text) : Json();
}

Json orNull(double value) {
    return value > 0.0 ? Json(value) : Json();
}

Json jsonOfTool(const std::string& libraryVersion) {
    Json tool{{"name", "rt305"}, {"version", toolVersion}};
    if (!libraryVersion.empty()) {
        tool["library"] = libraryVersion;
    }
    return tool;
}

Json jsonOf(const RecordingFacts& facts) {
    Json others = Json::array();
    for (const SourceFile& file : facts.otherFiles) {
        setName(others.emplace_back(), file.name);
        others.back()["sha256"] = orNull(file.checksum);
    }
    Json object;
    setName(object, facts.file);
    object.update({{"sha256", orNull(facts.checksum)},
                   {"other_files", others},
                   {"format", orNull(facts.format)},
                   {"station", orNull(facts.station)},
                   {"recorder", orNull(facts.recorder)},
                   {"start", dateOrNull(facts.start)},
                   {"trigger", dateOrNull(facts.trigger)},
                   {"segment", facts.segment == 0 ? Json() : Json(facts.segment)},
                   {"rate", orNull(facts.rateHz)},
                   {"duration", orNull(facts.durationSeconds)},
                   {"nominal", orNull(facts.nominalHz)}});
    return object;
}

}  // namespace

void setName(Json& object, const std::string& name) {
    object["file"] = name;
    if (!isUtf8(name)) {
        object["file_escaped"] = percentEscaped(name);
    }
}

std::string nameIn(const Json& object) {
    const std::string escaped = object.value("file_escaped", "");
    return escaped.empty() ? object.value("file", "") : withoutPercentEscapes(escaped);
}

std::string dumped(const Json& document, bool indented) {
    return document.dump(indented ? 2 : -1, ' ', false, Json::error_handler_t::replace) + '\n';
}

Json jsonOf(const GivenOptions& options) {
    Json object = Json::object();
    for (auto [name, value] : options) {
        std::replace(name.begin(), name.end(), '-', '_');
        object[name] = value.empty() ? Json(true) : Json(value);
    }
    return object;
}

Json originOf(const RecordingFacts& facts, const GivenOptions& options, const std::string& libraryVersion) {
    return {{"tool", jsonOfTool(libraryVersion)}, {"recording", jsonOf(facts)}, {"options", jsonOf(options)}};
}

Json jsonOf(const std::vector<Remark>& remarks) {
    Json texts = Json::array();
    for (const Remark& remark : remarks) {
        texts.push_back(remark.text);
    }
    return texts;
}

}  // namespace rt305
