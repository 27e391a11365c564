/*
 * Copyright (c) 2026 The rovanta Authors
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *     http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

#include "hilog/log.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "ohos_host/host_control.h"

namespace OHOS {
namespace Host {
namespace {
constexpr unsigned int MIN_DOMAIN = 0xD000000;
constexpr unsigned int MAX_DOMAIN = 0xD0FFFFF;
constexpr size_t MAX_TAG_LENGTH = 31;
constexpr size_t MAX_MESSAGE_LENGTH = 4095;

enum class Length { NONE, CHAR, SHORT, LONG, LONG_LONG, INTMAX, SIZE, PTRDIFF, LONG_DOUBLE };

// Holds a va_list so that helpers can take the arguments one by one through a reference.
struct ArgReader {
    va_list list;
};

int64_t ReadSigned(ArgReader &reader, Length length)
{
    switch (length) {
    case Length::CHAR:
        return static_cast<signed char>(va_arg(reader.list, int));
    case Length::SHORT:
        return static_cast<short>(va_arg(reader.list, int));
    case Length::LONG:
        return va_arg(reader.list, long);
    case Length::LONG_LONG:
        return va_arg(reader.list, long long);
    case Length::INTMAX:
        return va_arg(reader.list, intmax_t);
    case Length::SIZE:
        return va_arg(reader.list, ssize_t);
    case Length::PTRDIFF:
        return va_arg(reader.list, ptrdiff_t);
    default:
        return va_arg(reader.list, int);
    }
}

uint64_t ReadUnsigned(ArgReader &reader, Length length)
{
    switch (length) {
    case Length::CHAR:
        return static_cast<unsigned char>(va_arg(reader.list, unsigned int));
    case Length::SHORT:
        return static_cast<unsigned short>(va_arg(reader.list, unsigned int));
    case Length::LONG:
        return va_arg(reader.list, unsigned long);
    case Length::LONG_LONG:
        return va_arg(reader.list, unsigned long long);
    case Length::INTMAX:
        return va_arg(reader.list, uintmax_t);
    case Length::SIZE:
        return va_arg(reader.list, size_t);
    case Length::PTRDIFF:
        return static_cast<uint64_t>(va_arg(reader.list, ptrdiff_t));
    default:
        return va_arg(reader.list, unsigned int);
    }
}

Length ReadLength(const char *&cursor)
{
    switch (*cursor) {
    case 'h':
        return cursor[1] == 'h' ? (cursor += 2, Length::CHAR) : (++cursor, Length::SHORT);
    case 'l':
        return cursor[1] == 'l' ? (cursor += 2, Length::LONG_LONG) : (++cursor, Length::LONG);
    case 'j':
        return ++cursor, Length::INTMAX;
    case 'z':
        return ++cursor, Length::SIZE;
    case 't':
        return ++cursor, Length::PTRDIFF;
    case 'L':
        return ++cursor, Length::LONG_DOUBLE;
    default:
        return Length::NONE;
    }
}

// Digits, or the int argument that a `*` stands for; none when there is neither.
std::optional<int> ReadCount(const char *&cursor, ArgReader &reader)
{
    if (*cursor == '*') {
        ++cursor;
        return va_arg(reader.list, int);
    }
    if (!std::isdigit(static_cast<unsigned char>(*cursor))) {
        return std::nullopt;
    }
    int count = 0;
    while (std::isdigit(static_cast<unsigned char>(*cursor))) {
        count = count * 10 + (*cursor++ - '0');
    }
    return count;
}

// The text of a line, built on the caller's stack; what goes past the message limit is cut off.
class MessageText {
public:
    void Append(const char *data, size_t size)
    {
        size = std::min(size, MAX_MESSAGE_LENGTH - size_);
        std::memcpy(bytes_ + size_, data, size);
        size_ += size;
    }

    void Append(std::string_view text)
    {
        Append(text.data(), text.size());
    }

    void Pad(size_t count)
    {
        count = std::min(count, MAX_MESSAGE_LENGTH - size_);
        std::memset(bytes_ + size_, ' ', count);
        size_ += count;
    }

    std::string_view View() const
    {
        return {bytes_, size_};
    }

private:
    char bytes_[MAX_MESSAGE_LENGTH];
    size_t size_ = 0;
};

// One conversion's flags, width and precision, as printf reads them.
struct ConversionFormat {
    char flags[8] = {0};
    size_t flagCount = 0;
    int width = -1;
    int precision = -1;

    bool Plain() const
    {
        return flagCount == 0 && width < 0 && precision < 0;
    }

    bool LeftAligned() const
    {
        return std::memchr(flags, '-', flagCount) != nullptr;
    }

    // The printf directive for this format with `suffix` (length modifier and conversion) at the end.
    void Directive(char *out, size_t size, const char *suffix) const
    {
        int used = std::snprintf(out, size, "%%%.*s", static_cast<int>(flagCount), flags);
        if (width >= 0) {
            used += std::snprintf(out + used, size - static_cast<size_t>(used), "%d", width);
        }
        if (precision >= 0) {
            used += std::snprintf(out + used, size - static_cast<size_t>(used), ".%d", precision);
        }
        std::snprintf(out + used, size - static_cast<size_t>(used), "%s", suffix);
    }
};

// Appends `value` formatted by printf with `format` and `suffix`, through a stack buffer, once unless the result is
// longer than the buffer.
template <typename Value>
void AppendPrintf(MessageText &text, const ConversionFormat &format, const char *suffix, Value value)
{
    char directive[48];
    format.Directive(directive, sizeof(directive), suffix);
    char buffer[128];
    int size = std::snprintf(buffer, sizeof(buffer), directive, value);
    if (size <= 0) {
        return;
    }
    if (static_cast<size_t>(size) < sizeof(buffer)) {
        text.Append(buffer, static_cast<size_t>(size));
        return;
    }
    std::string wide(static_cast<size_t>(size) + 1, '\0');
    std::snprintf(wide.data(), wide.size(), directive, value);
    text.Append(wide.data(), static_cast<size_t>(size));
}

void AppendString(MessageText &text, const ConversionFormat &format, const char *value)
{
    size_t length = format.precision >= 0 ? strnlen(value, static_cast<size_t>(format.precision)) : std::strlen(value);
    size_t padding = format.width > 0 && static_cast<size_t>(format.width) > length ? format.width - length : 0;
    if (!format.LeftAligned()) {
        text.Pad(padding);
    }
    text.Append(value, length);
    if (format.LeftAligned()) {
        text.Pad(padding);
    }
}

template <typename Integer> void AppendInteger(MessageText &text, Integer value, int base, bool upper)
{
    char digits[24];
    std::to_chars_result end = std::to_chars(digits, digits + sizeof(digits), value, base);
    if (upper) {
        std::transform(digits, end.ptr, digits, [](char digit) { return static_cast<char>(std::toupper(digit)); });
    }
    text.Append(digits, static_cast<size_t>(end.ptr - digits));
}

// The values of a line's conversions, encoded one after another: a kind letter, then eight bytes of value, or
// for a string its length in eight bytes and its bytes. Kept on the caller's stack unless they outgrow it.
class ArgWriter {
public:
    void Add(char kind, uint64_t bits)
    {
        Append(&kind, 1);
        Append(reinterpret_cast<const char *>(&bits), sizeof(bits));
    }

    void AddSigned(int64_t value)
    {
        Add('i', static_cast<uint64_t>(value));
    }

    void AddDouble(double value)
    {
        uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof(bits));
        Add('f', bits);
    }

    void AddString(const char *value)
    {
        size_t length = std::strlen(value);
        Add('s', length);
        Append(value, length);
    }

    std::string_view View() const
    {
        return overflow_.empty() ? std::string_view(inline_, size_) : std::string_view(overflow_);
    }

private:
    void Append(const char *data, size_t size)
    {
        if (overflow_.empty() && size_ + size <= sizeof(inline_)) {
            std::memcpy(inline_ + size_, data, size);
            size_ += size;
            return;
        }
        if (overflow_.empty()) {
            overflow_.assign(inline_, size_);
        }
        overflow_.append(data, size);
    }

    char inline_[512];
    size_t size_ = 0;
    std::string overflow_;
};

std::vector<HiLogArg> ReadArgs(const char *bytes, size_t size)
{
    std::vector<HiLogArg> args;
    for (const char *cursor = bytes; cursor < bytes + size;) {
        char kind = *cursor++;
        uint64_t bits = 0;
        std::memcpy(&bits, cursor, sizeof(bits));
        cursor += sizeof(bits);
        double number = 0;
        switch (kind) {
        case 'i':
            args.emplace_back(static_cast<int64_t>(bits));
            break;
        case 'u':
            args.emplace_back(bits);
            break;
        case 'f':
            std::memcpy(&number, &bits, sizeof(number));
            args.emplace_back(number);
            break;
        default:
            args.emplace_back(std::string(cursor, bits));
            cursor += bits;
        }
    }
    return args;
}

// Formats one conversion whose `%` and privacy flag are already consumed. Returns false, consuming no
// argument, for a conversion it does not know.
bool FormatConversion(const char *&cursor, ArgReader &reader, MessageText &text, ArgWriter &args)
{
    ConversionFormat format;
    while (*cursor != '\0' && std::strchr("-+ #0", *cursor) != nullptr && format.flagCount < sizeof(format.flags)) {
        format.flags[format.flagCount++] = *cursor++;
    }
    // As printf reads them: a negative width from `*` means left alignment, a negative precision none at all.
    std::optional<int> width = ReadCount(cursor, reader);
    if (width && *width < 0 && format.flagCount < sizeof(format.flags)) {
        format.flags[format.flagCount++] = '-';
    }
    format.width = width ? std::abs(*width) : -1;
    if (*cursor == '.') {
        ++cursor;
        format.precision = std::max(ReadCount(cursor, reader).value_or(0), -1);
    }
    Length length = ReadLength(cursor);
    char conversion = *cursor;
    switch (conversion) {
    case 'd':
    case 'i': {
        int64_t value = ReadSigned(reader, length);
        args.AddSigned(value);
        format.Plain() ? AppendInteger(text, value, 10, false)
                       : AppendPrintf(text, format, "lld", static_cast<long long>(value));
        break;
    }
    case 'c': {
        int64_t value = ReadSigned(reader, length);
        args.AddSigned(value);
        AppendPrintf(text, format, "c", static_cast<int>(value));
        break;
    }
    case 'u':
    case 'o':
    case 'x':
    case 'X': {
        uint64_t value = ReadUnsigned(reader, length);
        args.Add('u', value);
        const char suffix[] = {'l', 'l', conversion, '\0'};
        int base = conversion == 'u' ? 10 : conversion == 'o' ? 8 : 16;
        format.Plain() ? AppendInteger(text, value, base, conversion == 'X')
                       : AppendPrintf(text, format, suffix, value);
        break;
    }
    case 'p': {
        void *value = va_arg(reader.list, void *);
        args.Add('u', static_cast<uint64_t>(reinterpret_cast<uintptr_t>(value)));
        AppendPrintf(text, format, "p", value);
        break;
    }
    case 's': {
        const char *value = va_arg(reader.list, const char *);
        value = value != nullptr ? value : "(null)";
        args.AddString(value);
        AppendString(text, format, value);
        break;
    }
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A': {
        double value = length == Length::LONG_DOUBLE ? static_cast<double>(va_arg(reader.list, long double))
                                                     : va_arg(reader.list, double);
        args.AddDouble(value);
        const char suffix[] = {conversion, '\0'};
        AppendPrintf(text, format, suffix, value);
        break;
    }
    default:
        return false;
    }
    ++cursor;
    return true;
}

// Formats `fmt`, dropping the `{...}` flag that may follow each `%`. An unknown conversion is copied as it
// stands and the rest of the line is formatted on.
void Format(const char *fmt, ArgReader &reader, MessageText &text, ArgWriter &args)
{
    const char *cursor = fmt;
    while (*cursor != '\0') {
        const char *percent = std::strchr(cursor, '%');
        if (percent == nullptr) {
            text.Append(cursor, std::strlen(cursor));
            break;
        }
        text.Append(cursor, static_cast<size_t>(percent - cursor));
        const char *directive = percent;
        cursor = percent + 1;
        if (*cursor == '%') {
            text.Append("%", 1);
            ++cursor;
            continue;
        }
        if (*cursor == '{') {
            const char *close = std::strchr(cursor, '}');
            cursor = close != nullptr ? close + 1 : cursor + std::strlen(cursor);
        }
        if (!FormatConversion(cursor, reader, text, args)) {
            text.Append(directive, static_cast<size_t>(cursor - directive));
        }
    }
}

char LevelLetter(int level)
{
    static const char letters[] = "DIWEF";
    return level >= LOG_DEBUG && level <= LOG_FATAL ? letters[level - LOG_DEBUG] : '?';
}

char TypeLetter(int type)
{
    switch (type) {
    case LOG_APP:
        return 'A';
    case LOG_INIT:
        return 'I';
    case LOG_CORE:
        return 'C';
    case LOG_KMSG:
        return 'K';
    default:
        return '?';
    }
}

// One kept line in a single allocation: tag, format, text and the encoded arguments one after another.
struct KeptLine {
    KeptLine(int lineType, int lineLevel, unsigned int lineDomain, std::string_view tag, std::string_view format,
             std::string_view text, std::string_view args)
        : type(lineType), level(lineLevel), domain(lineDomain), thread(CallingThreadId()), tagSize(tag.size()),
          formatSize(format.size()), textSize(text.size()), argsSize(args.size()),
          bytes(new char[tag.size() + format.size() + text.size() + args.size()])
    {
        char *cursor = bytes.get();
        for (std::string_view part : {tag, format, text, args}) {
            std::memcpy(cursor, part.data(), part.size());
            cursor += part.size();
        }
    }

    HiLogLine Unpack() const
    {
        const char *tag = bytes.get();
        const char *format = tag + tagSize;
        const char *text = format + formatSize;
        return {type,
                level,
                domain,
                std::string(tag, tagSize),
                std::string(format, formatSize),
                ReadArgs(text + textSize, argsSize),
                std::string(text, textSize),
                thread};
    }

    int type;
    int level;
    unsigned int domain;
    uint64_t thread;
    size_t tagSize;
    size_t formatSize;
    size_t textSize;
    size_t argsSize;
    std::unique_ptr<char[]> bytes;
};

// Writes the line to standard error in the layout of the platform's log reader: date and time to the
// millisecond, process and thread id, level letter, type letter and the domain's low five hex digits, tag, text.
void Echo(int type, int level, unsigned int domain, std::string_view tag, std::string_view text)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    char stamp[32];
    std::strftime(stamp, sizeof(stamp), "%m-%d %H:%M:%S", &local);
    std::fprintf(stderr, "%s.%03ld %5d %5d %c %c%05X/%.*s: %.*s\n", stamp, now.tv_nsec / 1000000L,
                 static_cast<int>(getpid()), static_cast<int>(gettid()), LevelLetter(level), TypeLetter(type),
                 domain & 0xFFFFFu, static_cast<int>(tag.size()), tag.data(), static_cast<int>(text.size()),
                 text.data());
}

class HiLogStore {
public:
    static HiLogStore &Get()
    {
        static HiLogStore *store = new HiLogStore();
        return *store;
    }

    bool Enabled() const
    {
        return capacity_.load(std::memory_order_relaxed) != 0;
    }

    bool Echoing() const
    {
        return echo_;
    }

    void Add(KeptLine line)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.push_back(std::move(line));
        TrimLocked();
    }

    std::vector<HiLogLine> Lines()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<HiLogLine> lines;
        lines.reserve(lines_.size());
        for (const KeptLine &line : lines_) {
            lines.push_back(line.Unpack());
        }
        return lines;
    }

    void Clear()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.clear();
        dropped_ = 0;
    }

    void SetCapacity(size_t capacity)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        capacity_.store(capacity, std::memory_order_relaxed);
        TrimLocked();
    }

    size_t Capacity() const
    {
        return capacity_.load(std::memory_order_relaxed);
    }

    uint64_t Dropped()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return dropped_;
    }

private:
    HiLogStore() : echo_(EchoRequested()) {}

    static bool EchoRequested()
    {
        const char *flag = std::getenv("HILOG_STDERR");
        return flag != nullptr && std::strcmp(flag, "1") == 0;
    }

    void TrimLocked()
    {
        while (lines_.size() > capacity_.load(std::memory_order_relaxed)) {
            lines_.pop_front();
            ++dropped_;
        }
    }

    const bool echo_;
    std::atomic<size_t> capacity_{DEFAULT_HILOG_CAPACITY};
    std::mutex mutex_;
    std::deque<KeptLine> lines_;
    uint64_t dropped_ = 0;
};
} // namespace

// pthread_t is the address of the thread's control block on glibc: unique among live threads, below 2^48.
uint64_t CallingThreadId()
{
    return static_cast<uint64_t>(pthread_self());
}

std::vector<HiLogLine> HiLogLines()
{
    return HiLogStore::Get().Lines();
}

void ClearHiLog()
{
    HiLogStore::Get().Clear();
}

void SetHiLogCapacity(size_t capacity)
{
    HiLogStore::Get().SetCapacity(capacity);
}

size_t HiLogCapacity()
{
    return HiLogStore::Get().Capacity();
}

uint64_t HiLogDropped()
{
    return HiLogStore::Get().Dropped();
}
} // namespace Host
} // namespace OHOS

extern "C" int HiLogPrint(LogType type, LogLevel level, unsigned int domain, const char *tag, const char *fmt, ...)
{
    using namespace OHOS::Host;
    HiLogStore &store = HiLogStore::Get();
    if (!store.Enabled()) {
        return 0;
    }
    bool domainAllowed = type == LOG_APP || (domain >= MIN_DOMAIN && domain <= MAX_DOMAIN);
    if (!domainAllowed || tag == nullptr || fmt == nullptr) {
        return -1;
    }
    // On the stack, so that formatting allocates only the kept line itself.
    MessageText text;
    ArgWriter args;
    ArgReader reader;
    va_start(reader.list, fmt);
    Format(fmt, reader, text, args);
    va_end(reader.list);
    std::string_view keptTag(tag, strnlen(tag, MAX_TAG_LENGTH));
    if (store.Echoing()) {
        Echo(type, level, domain, keptTag, text.View());
    }
    store.Add(KeptLine(type, level, domain, keptTag, fmt, text.View(), args.View()));
    return static_cast<int>(text.View().size());
}
