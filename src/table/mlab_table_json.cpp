#include <map>

#include "adapter/nlohmann/json.h"
#include "table/mlab_table.h"

// A table's JSON form is made by one traversal, which serves a sink that builds a value and one that writes text.

namespace {

using nlohmann::json;

/// Builds a value.
class ValueSink {
public:
    explicit ValueSink(json& root) : next_(&root) {}

    template <class Value>
    void value(const Value& value) {
        *place() = value;
    }
    void beginObject() { open(json::object()); }
    void beginArray(std::size_t) { open(json::array()); }
    void key(const std::string& key) { next_ = &(*open_.back())[key]; }
    void end() { open_.pop_back(); }

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

/// Writes compact text.
class TextSink {
public:
    explicit TextSink(std::string& out) : out_(out) {}

    void value(double value) {
        separate();
        appendJson(out_, value);
    }
    void value(const std::string& text) {
        separate();
        appendJson(out_, text);
    }
    void value(std::int64_t value) { plain(std::to_string(value)); }
    void value(std::uint64_t value) { plain(std::to_string(value)); }
    void value(std::nullptr_t) { plain("null"); }
    void beginObject() { open('{', '}'); }
    void beginArray(std::size_t elements) {
        out_.reserve(out_.size() + elements * (longestJsonDouble + 1));
        open('[', ']');
    }
    void key(const std::string& key) {
        value(key);
        out_ += ':';
        first_ = true;
    }
    void end() {
        out_ += closing_.back();
        closing_.pop_back();
        first_ = false;
    }

private:
    void separate() {
        if (!first_) {
            out_ += ',';
        }
        first_ = false;
    }
    void plain(const std::string& text) {
        separate();
        out_ += text;
    }
    void open(char opening, char closing) {
        separate();
        out_ += opening;
        closing_ += closing;
        first_ = true;
    }

    std::string& out_;
    std::string closing_;
    bool first_ = true;
};

/// The key of a column without a name: the literal cut at its front by the column's index.
const char* unnamedKey(std::uint64_t col) {
    static constexpr char literal[] = "column";
    return literal + std::min<std::uint64_t>(col, sizeof literal - 1);
}

/// Keys in the order of the JSON text, with their columns. Of columns with the same key the last one counts.
std::map<std::string, std::uint64_t> keysOf(const MatlabTable::Scheme& scheme, std::uint64_t cols) {
    std::map<std::string, std::uint64_t> keys;
    for (std::uint64_t col = 0; col < cols; ++col) {
        const bool named = col < scheme.size() && !scheme[col].name.empty();
        keys[named ? scheme[col].name : unnamedKey(col)] = col;
    }
    return keys;
}

/// Result texts are printable ASCII. Three bytes of the devices' code page have a letter, all others become blanks.
std::string printableAscii(std::string text) {
    for (char& c : text) {
        switch (static_cast<unsigned char>(c)) {
            case 0xC0:
                c = 'A';
                break;
            case 0xC1:
                c = 'B';
                break;
            case 0xF1:
                c = 'c';
                break;
            default:
                if (c < 0x20 || c > 0x7E) {
                    c = ' ';
                }
        }
    }
    return text;
}

enum class Place { outermost, nested };

template <class Sink>
void traverse(const MatlabTable& table, Place place, Sink& sink);

template <class Sink, class T>
void traverse(const std::vector<T>& values, Sink& sink) {
    sink.beginArray(values.size());
    for (const T value : values) {
        sink.value(value);
    }
    sink.end();
}

template <class Sink>
void traverse(const MatlabCell& cell, Place placeOfTables, Sink& sink) {
    using enum MatlabCell::CellDataType;
    switch (cell.getDataType()) {
        case text:
            return sink.value(printableAscii(cell.toString()));
        case unsignedInteger:
            return sink.value(cell.toUInt());
        case signedInteger:
            return sink.value(cell.toInt());
        case floating:
            return sink.value(cell.toDouble());
        case table:
            return traverse(*cell.toMatlabTable(), placeOfTables, sink);
        case floatingVector:
            return traverse(cell.toDoubleVector(), sink);
        case signedVector:
            return traverse(cell.toIntVector(), sink);
        case unsignedVector:
            return traverse(cell.toUIntVector(), sink);
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
        sink.key(table.getName());
    }
    const auto keys = keysOf(scheme, table.getColNum());
    sink.beginArray(0);
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
    TextSink sink(text);
    traverse(*this, Place::outermost, sink);
    return text;
}

json MatlabTable::getJsonValue(std::uint64_t col, std::uint64_t row) const {
    json result;
    ValueSink sink(result);
    const MatlabCell* const cell = findCell(col, row);
    traverse(cell != nullptr ? *cell : MatlabCell(), Place::outermost, sink);
    return result;
}
