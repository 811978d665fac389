#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapter/nlohmann/json.h"
#include "table/json_number.h"
#include "table/mlab_table.h"

// One traversal makes the JSON form of a table. Its sink either builds a value or writes text.

namespace {

using nlohmann::json;

/// Result texts are printable ASCII. Three bytes of the code page of the devices become letters, all others blanks.
char printableAscii(char c) {
    switch (static_cast<unsigned char>(c)) {
        case 0xC0:
            return 'A';
        case 0xC1:
            return 'B';
        case 0xF1:
            return 'c';
        default:
            return c < 0x20 || c > 0x7E ? ' ' : c;
    }
}
std::string printableAscii(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return printableAscii(c); });
    return text;
}

/// Builds a value.
class ValueSink {
public:
    explicit ValueSink(json& root) : next_(&root) {}

    using Key = std::string;
    static Key keyOf(const std::string& name) { return name; }

    template <class Value>
    void value(const Value& value) {
        *place() = value;
    }
    void cellText(const std::string& text) { value(printableAscii(text)); }
    void beginObject() { open(json::object()); }
    void beginArray() { open(json::array()); }
    void key(const Key& key) { next_ = &(*open_.back())[key]; }
    void end() {
        assert(!open_.empty());
        open_.pop_back();
    }

private:
    json* place() {
        if (open_.empty() || open_.back()->is_object()) {
            return next_;
        }
        open_.back()->push_back(nullptr);
        return &open_.back()->back();
    }
    void open(json container) {
        json* const where = place();
        *where = std::move(container);
        open_.push_back(where);
    }

    json* next_;
    std::vector<json*> open_;
};

/// Writes compact text; it is complete after flush(). Short pieces and numbers are collected and appended together.
class TextSink {
public:
    explicit TextSink(std::string& out) : out_(out) {}

    /// The text of a key in quotes, and a colon.
    using Key = std::string;
    static Key keyOf(const std::string& name) { return quotedText(name) + ':'; }

    void value(double value) {
        if (!std::isfinite(value)) {
            return this->value(nullptr);
        }
        separate();
        if (count_ == numbers_.size()) {
            flush();
        }
        numbers_[count_] = value;
        places_[count_++] = collected_;
    }
    /// A row that several cells share, a frequency axis, is formatted once and copied.
    void value(const std::vector<double>& row) {
        separate();
        flush();
        const std::size_t start = out_.size();
        const auto [known, isNew] = written_.try_emplace(&row, Written{start, 0});
        if (isNew) {
            appendRow(row);
            known->second.length = out_.size() - start;
        } else {
            out_.append(out_, known->second.start, known->second.length);
        }
    }
    template <class Integer>
    void value(const std::vector<Integer>& row) {
        beginArray();
        for (const Integer element : row) {
            value(element);
        }
        end();
    }
    void value(const std::string& text) { plain(quotedText(text)); }
    void cellText(const std::string& text) {
        if (!needsNoEscape(text)) {
            return value(printableAscii(text));
        }
        separate();
        put('"');
        put(text);
        put('"');
    }
    void value(std::int64_t value) { plain(std::to_string(value)); }
    void value(std::uint64_t value) { plain(std::to_string(value)); }
    void value(std::nullptr_t) { plain("null"); }
    void beginObject() { open('{', '}'); }
    void beginArray() { open('[', ']'); }
    void key(const Key& key) {
        separate();
        put(key);
        first_ = true;
    }
    void end() {
        assert(!closing_.empty());
        put(closing_.back());
        closing_.pop_back();
        first_ = false;
    }
    void flush() {
        char text[sizeof buffer_ + JsonNumbers::most * roomForJsonNumber];
        char* end = text;
        const char* written = buffer_;
        const JsonNumbers numbers({numbers_.data(), count_});
        for (std::size_t i = 0; i < count_; ++i) {
            end = numbers.write(std::copy(written, places_[i], end), i);
            written = places_[i];
        }
        out_.append(text, std::copy<const char*>(written, collected_, end));
        collected_ = buffer_;
        count_ = 0;
    }

private:
    /// The text of a row.
    struct Written {
        std::size_t start;
        std::size_t length;
    };

    void appendRow(std::span<const double> row) {
        constexpr std::size_t blockSize = 64;
        char block[blockSize * roomForJsonNumber];
        out_ += '[';
        while (!row.empty()) {
            const auto some = row.first(std::min(row.size(), blockSize));
            row = row.subspan(some.size());
            // The comma after the last number is not part of the text.
            out_.append(block, writeJsonNumbers(block, some) - (row.empty() ? 1 : 0));
        }
        out_ += ']';
    }
    void separate() {
        if (!first_) {
            put(',');
        }
        first_ = false;
    }
    void plain(std::string_view text) {
        separate();
        put(text);
    }
    /// Memory for n characters behind those collected, n at most the size of the buffer.
    char* room(std::size_t n) {
        assert(n <= sizeof buffer_);
        if (n > static_cast<std::size_t>(buffer_ + sizeof buffer_ - collected_)) {
            flush();
        }
        return collected_;
    }
    void put(char c) {
        *room(1) = c;
        ++collected_;
    }
    void put(std::string_view text) {
        if (text.size() > sizeof buffer_) {
            flush();
            out_ += text;
            return;
        }
        collected_ = std::copy(text.begin(), text.end(), room(text.size()));
    }
    void open(char opening, char closing) {
        separate();
        put(opening);
        closing_ += closing;
        first_ = true;
    }

    std::string& out_;
    char buffer_[2048];
    char* collected_ = buffer_;                      // the end of the characters that are not appended yet
    std::array<double, JsonNumbers::most> numbers_;  // those not appended yet, and the characters that they precede
    std::array<const char*, JsonNumbers::most> places_;
    std::size_t count_ = 0;
    std::string closing_;
    std::map<const std::vector<double>*, Written> written_;  // by address: rows live longer than the sink
    bool first_ = true;
};

/// Length that the text of a table rarely exceeds. The rows of a column hold values of one type.
std::size_t textRoom(const MatlabTable& table) {
    constexpr std::size_t keyAndShortValue = 64;
    std::size_t room = keyAndShortValue * (1 + table.getRowNum() * table.getColNum());
    for (std::uint64_t col = 0; col < table.getColNum(); ++col) {
        if (table.getRowNum() == 0 || table.findCell(col, 0)->getDataType() < MatlabCell::CellDataType::table) {
            continue;
        }
        for (std::uint64_t row = 0; row < table.getRowNum(); ++row) {
            const MatlabCell& cell = *table.findCell(col, row);
            const MatlabTable* const nested = cell.toMatlabTable();
            const std::size_t numbers =
                cell.toDoubleVector().size() + cell.toIntVector().size() + cell.toUIntVector().size();
            room += numbers * (longestJsonNumber + 1) + (nested != nullptr ? textRoom(*nested) : 0);
        }
    }
    return room;
}

/// The key of a column without a name: the literal less as many leading characters as the column's index.
const char* unnamedKey(std::uint64_t col) {
    static constexpr char literal[] = "column";
    return literal + std::min<std::uint64_t>(col, sizeof literal - 1);
}

/// Keys in the order of the JSON text, with their columns. Of columns with the same key the last one is used.
std::map<std::string, std::uint64_t> keysOf(const MatlabTable::Scheme& scheme, std::uint64_t cols) {
    std::map<std::string, std::uint64_t> keys;
    for (std::uint64_t col = 0; col < cols; ++col) {
        const bool named = col < scheme.size() && !scheme[col].name.empty();
        keys[named ? scheme[col].name : unnamedKey(col)] = col;
    }
    return keys;
}

enum class Place { outermost, nested };

template <class Sink>
void traverse(const MatlabTable& table, Place place, Sink& sink);

template <class Sink>
void traverse(const MatlabCell& cell, Place placeOfTables, Sink& sink) {
    using enum MatlabCell::CellDataType;
    switch (cell.getDataType()) {
        case text:
            return sink.cellText(cell.toText());
        case unsignedInteger:
            return sink.value(cell.toUInt());
        case signedInteger:
            return sink.value(cell.toInt());
        case floating:
            return sink.value(cell.toDouble());
        case table:
            return traverse(*cell.toMatlabTable(), placeOfTables, sink);
        case floatingVector:
            return sink.value(cell.toDoubleVector());
        case signedVector:
            return sink.value(cell.toIntVector());
        case unsignedVector:
            return sink.value(cell.toUIntVector());
        case none:
            break;
    }
    sink.value(cell.toString());
}

template <class Sink>
void traverse(const MatlabTable& table, Place place, Sink& sink) {
    const MatlabTable::Scheme scheme = table.getScheme();
    const bool hasCells = table.findCell(0, 0) != nullptr;
    if (!hasCells && scheme.empty()) {
        return sink.value(std::string("{}"));
    }
    if (table.getRowNum() == 0) {
        return sink.value(nullptr);
    }
    if (place == Place::outermost) {
        sink.beginObject();
        sink.key(Sink::keyOf(table.getName()));
    }
    std::vector<std::pair<typename Sink::Key, std::uint64_t>> keys;
    for (const auto& [key, col] : keysOf(scheme, table.getColNum())) {
        keys.emplace_back(Sink::keyOf(key), col);
    }
    sink.beginArray();
    for (std::uint64_t row = 0; row < table.getRowNum(); ++row) {
        sink.beginObject();
        for (const auto& [key, col] : keys) {
            sink.key(key);
            traverse(*table.findCell(col, row), Place::nested, sink);
        }
        sink.end();
    }
    sink.end();
    if (place == Place::outermost) {
        sink.end();
    }
}

}  // namespace

json MatlabTable::toJson() const {
    json result;
    ValueSink sink(result);
    traverse(*this, Place::outermost, sink);
    return result;
}

std::string MatlabTable::toJsonText() const {
    std::string text;
    text.reserve(textRoom(*this));
    TextSink sink(text);
    traverse(*this, Place::outermost, sink);
    sink.flush();
    return text;
}

json MatlabTable::getJsonValue(std::uint64_t col, std::uint64_t row) const {
    json result;
    ValueSink sink(result);
    const MatlabCell* const cell = findCell(col, row);
    traverse(cell != nullptr ? *cell : MatlabCell(), Place::outermost, sink);
    return result;
}
