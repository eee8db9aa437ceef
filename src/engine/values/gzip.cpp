#include "engine/values/gzip.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace kap::engine::gzip {
namespace {

constexpr std::size_t kWindow = 32768;  // how far back a repetition may lie
constexpr std::size_t kShortest = 3;    // a repetition
constexpr std::size_t kLongest = 258;
constexpr int kEndOfBlock = 256;
constexpr int kFirstLength = 257;  // the symbols of lengths begin here
constexpr int kFixedSymbols = 288;
constexpr int kDistances = 30;
constexpr int kMostBits = 15;

// A number of a range: the least one of it, and how many bits tell which.
struct Range {
    std::uint16_t least;
    std::uint8_t bits;
};

constexpr std::array<Range, 29> kLengths{
    {{3, 0},  {4, 0},  {5, 0},  {6, 0},   {7, 0},   {8, 0},   {9, 0},   {10, 0},  {11, 1}, {13, 1},
     {15, 1}, {17, 1}, {19, 2}, {23, 2},  {27, 2},  {31, 2},  {35, 3},  {43, 3},  {51, 3}, {59, 3},
     {67, 4}, {83, 4}, {99, 4}, {115, 4}, {131, 5}, {163, 5}, {195, 5}, {227, 5}, {258, 0}}};

constexpr std::array<Range, kDistances> kFarness{
    {{1, 0},     {2, 0},     {3, 0},     {4, 0},      {5, 1},      {7, 1},
     {9, 2},     {13, 2},    {17, 3},    {25, 3},     {33, 4},     {49, 4},
     {65, 5},    {97, 5},    {129, 6},   {193, 6},    {257, 7},    {385, 7},
     {513, 8},   {769, 8},   {1025, 9},  {1537, 9},   {2049, 10},  {3073, 10},
     {4097, 11}, {6145, 11}, {8193, 12}, {12289, 12}, {16385, 13}, {24577, 13}}};

// The range that a number lies in.
template <std::size_t Count>
std::size_t rangeOf(const std::array<Range, Count>& ranges, std::size_t number) {
    const auto above = std::ranges::upper_bound(ranges, number, {}, &Range::least);
    return static_cast<std::size_t>(above - ranges.begin()) - 1;
}

std::uint32_t checksum(std::string_view bytes) {
    constexpr std::uint32_t kPolynomial = 0xEDB88320U;
    std::uint32_t sum = 0xFFFFFFFFU;
    for (const char c : bytes) {
        sum ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? kPolynomial : 0U);
    }
    return ~sum;
}

// How many bits the fixed code has for a symbol.
constexpr std::uint8_t fixedBits(int symbol) {
    if (symbol < 144) return 8;
    if (symbol < 256) return 9;
    return symbol < 280 ? 7 : 8;
}

// --- Writing

class BitWriter {
public:
    // Bits from the lowest on.
    void add(std::uint32_t value, int bits) {
        held_ |= static_cast<std::uint64_t>(value) << static_cast<unsigned>(count_);
        for (count_ += bits; count_ >= 8; count_ -= 8) {
            bytes_ += static_cast<char>(held_ & 0xFFU);
            held_ >>= 8U;
        }
    }
    // A code goes from its highest bit on.
    void addCode(std::uint32_t code, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit)
            add((code >> static_cast<unsigned>(bit)) & 1U, 1);
    }
    void addSymbol(int symbol) {
        const auto code = static_cast<std::uint32_t>(symbol < 144   ? 0x30 + symbol
                                                     : symbol < 256 ? 0x190 + symbol - 144
                                                     : symbol < 280 ? symbol - 256
                                                                    : 0xC0 + symbol - 280);
        addCode(code, fixedBits(symbol));
    }
    void addRepetition(std::size_t length, std::size_t distance) {
        constexpr int kDistanceBits = 5;
        const std::size_t range = rangeOf(kLengths, length);
        addSymbol(kFirstLength + static_cast<int>(range));
        add(static_cast<std::uint32_t>(length - kLengths[range].least), kLengths[range].bits);
        const std::size_t far = rangeOf(kFarness, distance);
        addCode(static_cast<std::uint32_t>(far), kDistanceBits);
        add(static_cast<std::uint32_t>(distance - kFarness[far].least), kFarness[far].bits);
    }
    [[nodiscard]] std::string finished() {
        if (count_ > 0) add(0, 8 - count_);
        return std::move(bytes_);
    }

private:
    std::string bytes_;
    std::uint64_t held_ = 0;
    int count_ = 0;
};

// Finds what stood before: the places where three bytes began, the last ones first.
class Repetitions {
public:
    explicit Repetitions(std::string_view bytes)
        : bytes_(bytes), last_(kWindow, kNone), before_(bytes.size(), kNone) {}

    void note(std::size_t at) {
        if (at + kShortest > bytes_.size()) return;
        std::size_t& last = last_[hashAt(at)];
        before_[at] = last;
        last = at;
    }

    // The longest one of what begins here, as its length and how far back it lies.
    [[nodiscard]] std::pair<std::size_t, std::size_t> longest(std::size_t at) const {
        constexpr int kMostTried = 32;
        std::pair<std::size_t, std::size_t> best{0, 0};
        if (at + kShortest > bytes_.size()) return best;
        const std::size_t most = std::min(kLongest, bytes_.size() - at);
        std::size_t place = last_[hashAt(at)];
        for (int tried = 0; tried < kMostTried && place != kNone && at - place <= kWindow;
             ++tried) {
            std::size_t length = 0;
            while (length < most && bytes_[place + length] == bytes_[at + length])
                ++length;
            if (length > best.first) best = {length, at - place};
            place = before_[place];
        }
        return best;
    }

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    [[nodiscard]] std::size_t hashAt(std::size_t at) const {
        std::uint32_t hash = 0;
        for (std::size_t i = 0; i < kShortest; ++i)
            hash = hash * 251U + static_cast<unsigned char>(bytes_[at + i]);
        return hash % kWindow;
    }

    std::string_view bytes_;
    std::vector<std::size_t> last_;
    std::vector<std::size_t> before_;
};

// One block in the fixed code.
std::string deflated(std::string_view bytes) {
    BitWriter out;
    constexpr std::uint32_t kLastInFixedCode = 3;
    out.add(kLastInFixedCode, 3);
    Repetitions repetitions(bytes);
    for (std::size_t at = 0; at < bytes.size();) {
        const auto [length, distance] = repetitions.longest(at);
        const std::size_t passed = length < kShortest ? 1 : length;
        if (passed == 1) {
            out.addSymbol(static_cast<unsigned char>(bytes[at]));
        } else {
            out.addRepetition(length, distance);
        }
        for (const std::size_t end = at + passed; at < end; ++at)
            repetitions.note(at);
    }
    out.addSymbol(kEndOfBlock);
    return out.finished();
}

void addNumber(std::string& bytes, std::uint32_t number) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>((number >> shift) & 0xFFU);
}

// --- Reading

struct WrongBytes {};

class BitReader {
public:
    explicit BitReader(std::string_view bytes) : bytes_(bytes) {}

    std::uint32_t take(int bits) {
        std::uint32_t value = 0;
        for (int i = 0; i < bits; ++i) {
            if (at_ >= bytes_.size()) throw WrongBytes();
            const auto byte = static_cast<unsigned char>(bytes_[at_]);
            value |= ((static_cast<std::uint32_t>(byte) >> bit_) & 1U) << static_cast<unsigned>(i);
            bit_ = (bit_ + 1) % 8;
            if (bit_ == 0) ++at_;
        }
        return value;
    }
    // Whole bytes, from the next one on.
    std::string_view takeBytes(std::size_t count) {
        skipToByte();
        if (bytes_.size() - at_ < count) throw WrongBytes();
        const std::string_view result = bytes_.substr(at_, count);
        at_ += count;
        return result;
    }
    void takeText() {
        while (takeBytes(1).front() != '\0') {
        }
    }
    void skipToByte() {
        if (bit_ == 0) return;
        bit_ = 0;
        ++at_;
    }
    std::uint32_t takeNumber(int bytes) {
        skipToByte();
        return take(bytes * 8);
    }
    [[nodiscard]] bool atEnd() const { return at_ >= bytes_.size(); }

private:
    std::string_view bytes_;
    std::size_t at_ = 0;
    unsigned bit_ = 0;
};

// A code of symbols, by how many bits each has.
class Code {
public:
    explicit Code(std::span<const std::uint8_t> bits) {
        for (const std::uint8_t each : bits)
            ++counts_[each];
        counts_[0] = 0;
        for (std::uint8_t length = 1; length <= kMostBits; ++length) {
            for (std::size_t symbol = 0; symbol < bits.size(); ++symbol) {
                if (bits[symbol] == length) symbols_.push_back(static_cast<int>(symbol));
            }
        }
    }

    [[nodiscard]] int take(BitReader& in) const {
        int code = 0;
        int first = 0;
        int index = 0;
        for (std::size_t length = 1; length <= kMostBits; ++length) {
            code |= static_cast<int>(in.take(1));
            const int count = counts_[length];
            if (code - first < count)
                return symbols_[static_cast<std::size_t>(index + code - first)];
            index += count;
            first = (first + count) * 2;
            code *= 2;
        }
        throw WrongBytes();
    }

private:
    std::array<int, kMostBits + 1> counts_{};
    std::vector<int> symbols_;
};

class Inflater {
public:
    Inflater(BitReader& in, std::size_t longest) : in_(in), longest_(longest) {}

    std::string text() {
        bool last = false;
        while (!last) {
            last = in_.take(1) == 1;
            block(in_.take(2));
        }
        return std::move(out_);
    }

private:
    void block(std::uint32_t kind) {
        enum : std::uint32_t { Stored, Fixed, Own };
        if (kind == Stored) {
            const std::uint32_t length = in_.takeNumber(2);
            if ((in_.takeNumber(2) ^ length) != 0xFFFFU) throw WrongBytes();
            out_ += in_.takeBytes(length);
            checkLength();
        } else if (kind == Fixed) {
            std::array<std::uint8_t, kFixedSymbols> bits{};
            for (int i = 0; i < kFixedSymbols; ++i)
                bits[static_cast<std::size_t>(i)] = fixedBits(i);
            std::array<std::uint8_t, kDistances> distances{};
            distances.fill(5);
            symbols(Code(bits), Code(distances));
        } else if (kind == Own) {
            ownCodes();
        } else {
            throw WrongBytes();
        }
    }

    // The bits of both codes stand before the block, in a third code.
    void ownCodes() {
        static constexpr std::array<std::uint8_t, 19> kOrder{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                             11, 4,  12, 3, 13, 2, 14, 1, 15};
        const std::size_t lengths = in_.take(5) + 257;
        const std::size_t distances = in_.take(5) + 1;
        const std::size_t given = in_.take(4) + 4;
        std::array<std::uint8_t, 19> bits{};
        for (std::size_t i = 0; i < given; ++i)
            bits[kOrder[i]] = static_cast<std::uint8_t>(in_.take(3));
        const std::vector<std::uint8_t> all = bitsOfCodes(Code(bits), lengths + distances);
        const std::span<const std::uint8_t> both(all);
        symbols(Code(both.first(lengths)), Code(both.subspan(lengths)));
    }

    std::vector<std::uint8_t> bitsOfCodes(const Code& code, std::size_t count) {
        constexpr int kAgain = 16;
        constexpr int kZeros = 17;
        std::vector<std::uint8_t> bits;
        while (bits.size() < count) {
            const int symbol = code.take(in_);
            if (symbol < kAgain) {
                bits.push_back(static_cast<std::uint8_t>(symbol));
                continue;
            }
            if (symbol == kAgain && bits.empty()) throw WrongBytes();
            const std::uint8_t value = symbol == kAgain ? bits.back() : 0;
            const std::size_t times = symbol == kAgain   ? in_.take(2) + 3
                                      : symbol == kZeros ? in_.take(3) + 3
                                                         : in_.take(7) + 11;
            bits.insert(bits.end(), times, value);
        }
        if (bits.size() != count) throw WrongBytes();
        return bits;
    }

    void symbols(const Code& lengths, const Code& distances) {
        for (int symbol = lengths.take(in_); symbol != kEndOfBlock; symbol = lengths.take(in_)) {
            if (symbol < kEndOfBlock) {
                out_ += static_cast<char>(symbol);
            } else {
                const std::size_t length = numberOf(kLengths, symbol - kFirstLength);
                repeat(length, numberOf(kFarness, distances.take(in_)));
            }
            checkLength();
        }
    }

    template <std::size_t Count>
    std::size_t numberOf(const std::array<Range, Count>& ranges, int range) {
        if (range < 0 || static_cast<std::size_t>(range) >= Count) throw WrongBytes();
        const Range& found = ranges[static_cast<std::size_t>(range)];
        return found.least + in_.take(found.bits);
    }

    void repeat(std::size_t length, std::size_t distance) {
        if (distance > out_.size()) throw WrongBytes();
        for (; length > 0; --length)
            out_ += out_[out_.size() - distance];
    }

    void checkLength() const {
        if (out_.size() > longest_) throw WrongBytes();
    }

    BitReader& in_;
    std::size_t longest_;
    std::string out_;
};

// What stands before the compressed bytes: marks, and parts that the marks tell of.
void passHeader(BitReader& in) {
    constexpr std::string_view kMagic = "\x1F\x8B\x08";
    constexpr std::size_t kTimeAndSystem = 6;
    if (in.takeBytes(kMagic.size()) != kMagic) throw WrongBytes();
    const std::uint32_t flags = in.takeNumber(1);
    (void)in.takeBytes(kTimeAndSystem);
    if ((flags & 4U) != 0) (void)in.takeBytes(in.takeNumber(2));
    if ((flags & 8U) != 0) in.takeText();
    if ((flags & 16U) != 0) in.takeText();
    if ((flags & 2U) != 0) (void)in.takeBytes(2);
}

}  // namespace

std::string compressed(std::string_view bytes) {
    using std::string_view_literals::operator""sv;
    constexpr std::string_view kHeader = "\x1F\x8B\x08\0\0\0\0\0\0\xFF"sv;
    std::string result(kHeader);
    result += deflated(bytes);
    addNumber(result, checksum(bytes));
    addNumber(result, static_cast<std::uint32_t>(bytes.size()));
    return result;
}

std::optional<std::string> decompressed(std::string_view bytes, std::size_t longest) {
    std::string result;
    try {
        BitReader in(bytes);
        do {
            passHeader(in);
            const std::string member = Inflater(in, longest - result.size()).text();
            const bool right = in.takeNumber(4) == checksum(member) &&
                               in.takeNumber(4) == static_cast<std::uint32_t>(member.size());
            if (!right) return std::nullopt;
            result += member;
        } while (!in.atEnd());
    } catch (const WrongBytes&) {
        return std::nullopt;
    }
    return result;
}

}  // namespace kap::engine::gzip
