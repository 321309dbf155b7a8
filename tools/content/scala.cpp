#include "scala.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

#include "content/file_bytes.h"
#include "failure.h"

namespace stratovane::content_tool {

namespace {

constexpr int mostDegrees = 4096;
constexpr double centsPerOctave = 1200;

/// The lines of a file that are no comments, with their numbers for whoever mends it.
class Lines {
  public:
    explicit Lines(const std::string& path) : path_{path} {
        const auto bytes = readFile(path);
        if (!bytes) throw Failure{Exit::input, path + " cannot be read"};
        text_ = ByteView{*bytes}.text();
    }
    std::optional<std::string> next() {
        while (at_ < text_.size()) {
            const std::size_t end = std::min(text_.find('\n', at_), text_.size());
            std::string line = text_.substr(at_, end - at_);
            at_ = end + 1;
            ++number_;
            if (line.ends_with('\r')) line.pop_back();
            if (!line.starts_with('!')) return line;
        }
        return std::nullopt;
    }
    /// The first word of the next line.
    std::string word(const char* expected) {
        const auto line = next();
        if (!line) refuse(std::string{"the file ends before "} + expected);
        const std::size_t start = line->find_first_not_of(" \t");
        if (start == std::string::npos) refuse(std::string{expected} + " was expected");
        return line->substr(start, line->find_first_of(" \t", start) - start);
    }
    int integer(const char* expected, int low, int high) {
        const std::string text = word(expected);
        int value = 0;
        const char* begin = text.data() + (text.starts_with('+') ? 1 : 0);
        const auto [end, error] = std::from_chars(begin, text.data() + text.size(), value);
        if (error != std::errc{} || end != text.data() + text.size() || value < low || value > high)
            refuse(std::string{expected} + " was expected, from " + std::to_string(low) + " to " +
                   std::to_string(high) + ", not \"" + text + "\"");
        return value;
    }
    [[noreturn]] void refuse(const std::string& sentence) const {
        throw Failure{Exit::input, path_ + ", line " + std::to_string(number_) + ": " + sentence};
    }

  private:
    std::string path_, text_;
    std::size_t at_ = 0;
    int number_ = 0;
};

std::optional<double> wholeNumber(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// With a period the number is cents, else a ratio of whole numbers.
double pitchCents(Lines& lines) {
    const std::string text = lines.word("a pitch");
    std::optional<double> cents;
    if (text.find('.') != std::string::npos) {
        cents = wholeNumber(text);
    } else {
        const std::size_t slash = text.find('/');
        const auto over = wholeNumber(std::string_view{text}.substr(0, slash));
        const auto under = slash == std::string::npos
                               ? std::optional{1.0}
                               : wholeNumber(std::string_view{text}.substr(slash + 1));
        if (over && under && *over > 0 && *under > 0)
            cents = centsPerOctave * std::log2(*over / *under);
    }
    constexpr double widest = 100000;
    if (!cents || !(std::fabs(*cents) <= widest))
        lines.refuse("a pitch was expected (\"701.955\" cents or a ratio \"3/2\"), not \"" + text +
                     "\"");
    return *cents;
}

/// Degrees 1 on; the last one is where the scale repeats.
std::vector<double> readScale(const std::string& path) {
    Lines lines{path};
    if (!lines.next()) lines.refuse("a description was expected");
    const int count = lines.integer("the number of notes", 1, mostDegrees);
    std::vector<double> cents;
    for (int i = 0; i < count; ++i) cents.push_back(pitchCents(lines));
    return cents;
}

struct Mapping {
    int first = 0, last = 127;
    int middle = 60;  // has degree 0
    int referenceNote = 69;
    double referenceHz = 440;
    int octaveDegree = 0;                       // where the mapping repeats; 0: the scale's end
    std::vector<std::optional<int>> degrees{};  // of the keys from the middle on; empty: linear
};

Mapping readMapping(const std::string& path) {
    Lines lines{path};
    Mapping mapping;
    const int size = lines.integer("the size of the map", 0, 128);
    mapping.first = lines.integer("the first note", 0, 127);
    mapping.last = lines.integer("the last note", 0, 127);
    mapping.middle = lines.integer("the middle note", 0, 127);
    mapping.referenceNote = lines.integer("the reference note", 0, 127);
    const std::string frequency = lines.word("the reference frequency");
    const auto hz = wholeNumber(frequency);
    if (!hz || !(*hz > 0 && *hz < 100000))
        lines.refuse("the reference frequency was expected in Hz, not \"" + frequency + "\"");
    mapping.referenceHz = *hz;
    mapping.octaveDegree = lines.integer("the degree of the octave", 0, mostDegrees);
    for (int i = 0; i < size; ++i) {
        const auto line = lines.next();  // entries that are missing are not mapped
        const std::size_t start = line ? line->find_first_not_of(" \t") : std::string::npos;
        if (start == std::string::npos || (*line)[start] == 'x' || (*line)[start] == 'X') {
            mapping.degrees.emplace_back();
            continue;
        }
        int degree = 0;
        const auto [end, error] =
            std::from_chars(line->data() + start, line->data() + line->size(), degree);
        if (error != std::errc{} || degree < 0 || degree > mostDegrees)
            lines.refuse("a degree of the scale or x was expected, not \"" + *line + "\"");
        mapping.degrees.emplace_back(degree);
    }
    return mapping;
}

struct Division {
    int whole, rest;  // rest is never negative
};
Division divided(int a, int b) {
    const int rest = (a % b + b) % b;
    return {(a - rest) / b, rest};
}

double degreeCents(const std::vector<double>& scale, int degree) {
    const auto [periods, rest] = divided(degree, static_cast<int>(scale.size()));
    return periods * scale.back() + (rest == 0 ? 0.0 : scale[static_cast<std::size_t>(rest) - 1]);
}

/// Cents above degree 0 of the middle note; nothing for notes that are not mapped.
std::optional<double> noteCents(const std::vector<double>& scale, const Mapping& mapping,
                                int note) {
    const int distance = note - mapping.middle;
    if (mapping.degrees.empty()) return degreeCents(scale, distance);
    const auto [periods, key] = divided(distance, static_cast<int>(mapping.degrees.size()));
    const auto degree = mapping.degrees[static_cast<std::size_t>(key)];
    if (!degree) return std::nullopt;
    const int octave =
        mapping.octaveDegree == 0 ? static_cast<int>(scale.size()) : mapping.octaveDegree;
    return degreeCents(scale, *degree) + periods * degreeCents(scale, octave);
}

}  // namespace

std::unique_ptr<TuningTable> tuningFromScala(const std::string& scalePath,
                                             const std::string& mappingPath) {
    const auto scale = readScale(scalePath);
    const Mapping mapping = mappingPath.empty() ? Mapping{} : readMapping(mappingPath);
    const auto reference = noteCents(scale, mapping, mapping.referenceNote);
    if (!reference) throw Failure{Exit::input, mappingPath + ": the reference note has no degree"};
    constexpr double concertNote = 69, concertHz = 440;
    const double referencePitch =
        concertNote + 12 * std::log2(mapping.referenceHz / concertHz);  // semitones from note 0
    auto table = std::make_unique<TuningTable>();
    table->semitones.resize(TuningTable::notes);
    for (int note = mapping.first; note <= mapping.last; ++note) {
        const auto cents = noteCents(scale, mapping, note);
        if (!cents) continue;
        table->semitones[static_cast<std::size_t>(note)] =
            static_cast<float>(referencePitch + (*cents - *reference) / 100 - note);
    }
    return table;
}

}  // namespace stratovane::content_tool
