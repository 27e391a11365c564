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

#include <atomic>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>

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
    static const struct {
        const char *text;
        Length length;
    } modifiers[] = {{"hh", Length::CHAR},   {"h", Length::SHORT},      {"ll", Length::LONG_LONG},
                     {"l", Length::LONG},    {"j", Length::INTMAX},     {"z", Length::SIZE},
                     {"t", Length::PTRDIFF}, {"L", Length::LONG_DOUBLE}};
    for (const auto &modifier : modifiers) {
        size_t size = std::strlen(modifier.text);
        if (std::strncmp(cursor, modifier.text, size) == 0) {
            cursor += size;
            return modifier.length;
        }
    }
    return Length::NONE;
}

// Copies digits, or the int argument that a `*` stands for, to `printfFormat`.
void ReadCount(const char *&cursor, ArgReader &reader, std::string &printfFormat)
{
    if (*cursor == '*') {
        printfFormat += std::to_string(va_arg(reader.list, int));
        ++cursor;
        return;
    }
    while (std::isdigit(static_cast<unsigned char>(*cursor))) {
        printfFormat += *cursor++;
    }
}

template <typename Value> void AppendFormatted(std::string &text, const std::string &printfFormat, Value value)
{
    int size = std::snprintf(nullptr, 0, printfFormat.c_str(), value);
    if (size <= 0) {
        return;
    }
    std::string piece(static_cast<size_t>(size) + 1, '\0');
    std::snprintf(piece.data(), piece.size(), printfFormat.c_str(), value);
    piece.pop_back();
    text += piece;
}

// Formats one conversion whose `%` and privacy flag are already consumed. Returns false, consuming no
// argument, for a conversion it does not know.
bool FormatConversion(const char *&cursor, ArgReader &reader, std::string &text, std::vector<HiLogArg> &args)
{
    std::string printfFormat = "%";
    while (*cursor != '\0' && std::strchr("-+ #0", *cursor) != nullptr) {
        printfFormat += *cursor++;
    }
    ReadCount(cursor, reader, printfFormat);
    if (*cursor == '.') {
        printfFormat += *cursor++;
        ReadCount(cursor, reader, printfFormat);
    }
    Length length = ReadLength(cursor);
    char conversion = *cursor;
    switch (conversion) {
    case 'd':
    case 'i':
    case 'c': {
        int64_t value = ReadSigned(reader, length);
        args.emplace_back(value);
        AppendFormatted(text, printfFormat + (conversion == 'c' ? "c" : "lld"), static_cast<long long>(value));
        break;
    }
    case 'u':
    case 'o':
    case 'x':
    case 'X': {
        uint64_t value = ReadUnsigned(reader, length);
        args.emplace_back(value);
        AppendFormatted(text, printfFormat + "ll" + conversion, static_cast<unsigned long long>(value));
        break;
    }
    case 'p': {
        void *value = va_arg(reader.list, void *);
        args.emplace_back(static_cast<uint64_t>(reinterpret_cast<uintptr_t>(value)));
        AppendFormatted(text, printfFormat + "p", value);
        break;
    }
    case 's': {
        const char *value = va_arg(reader.list, const char *);
        args.emplace_back(std::string(value != nullptr ? value : "(null)"));
        AppendFormatted(text, printfFormat + "s", value != nullptr ? value : "(null)");
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
        args.emplace_back(value);
        AppendFormatted(text, printfFormat + conversion, value);
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
void Format(const char *fmt, ArgReader &reader, std::string &text, std::vector<HiLogArg> &args)
{
    const char *cursor = fmt;
    while (*cursor != '\0') {
        if (*cursor != '%') {
            text += *cursor++;
            continue;
        }
        const char *directive = cursor++;
        if (*cursor == '%') {
            text += '%';
            ++cursor;
            continue;
        }
        if (*cursor == '{') {
            const char *close = std::strchr(cursor, '}');
            cursor = close != nullptr ? close + 1 : cursor + std::strlen(cursor);
        }
        if (!FormatConversion(cursor, reader, text, args)) {
            text.append(directive, cursor);
        }
    }
    if (text.size() > MAX_MESSAGE_LENGTH) {
        text.resize(MAX_MESSAGE_LENGTH);
    }
}

char LevelLetter(int level)
{
    static const char letters[] = "DIWEF";
    return level >= LOG_DEBUG && level <= LOG_FATAL ? letters[level - LOG_DEBUG] : '?';
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

    void Add(HiLogLine line)
    {
        if (echo_) {
            std::fprintf(stderr, "%c %02X/%05X/%s: %s\n", LevelLetter(line.level), static_cast<unsigned>(line.type),
                         line.domain & 0xFFFFFu, line.tag.c_str(), line.text.c_str());
        }
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.push_back(std::move(line));
        TrimLocked();
    }

    std::vector<HiLogLine> Lines()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return {lines_.begin(), lines_.end()};
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
    std::deque<HiLogLine> lines_;
    uint64_t dropped_ = 0;
};
} // namespace

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
    HiLogLine line{type, level, domain, std::string(tag).substr(0, MAX_TAG_LENGTH), fmt, {}, {}};
    ArgReader reader;
    va_start(reader.list, fmt);
    Format(fmt, reader, line.text, line.args);
    va_end(reader.list);
    int size = static_cast<int>(line.text.size());
    store.Add(std::move(line));
    return size;
}
