/// @file
/// Data files: serialized content in an envelope with a checksum. Damaged files are rejected.
///
///     tova::serialization::labeled_text_buffer state;
///     state.add_value("width", 0.1);
///     if (const auto stored = tova::extras::store_data("state.dat", state))
///         std::cout << "stored\n";
///     const auto loaded = tova::extras::load_data("state.dat", state);
///     if (!loaded)
///         std::cerr << loaded.message << '\n';  // "state.dat: damaged, the checksum differs"
///
/// A truncated or modified file is rejected with a reason, and the buffer keeps its content. The
/// content is checked, too, so the reader returns whatever the bytes are. The checksum detects
/// damage; it is not a signature.
///
/// A store replaces the old file atomically, after it has synced the new one. Threads may store and
/// load files at the same time, each with its own buffers; a load sees either the old or the new
/// content.
#pragma once

#include <tova/abi.hpp>
#include <tova/extras/_private/whole_file.hpp>
#include <tova/extras/checked.hpp>
#include <tova/serialization/labeled_serialize_buffer.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace TOVA_2_18 {
namespace extras {

/// Why data could not be stored or loaded.
enum class data_error {
    none,              ///< Success.
    file,              ///< The system reports an error, or the path is not that of a regular file.
    not_a_data_file,   ///< It does not begin like a data file.
    unknown_envelope,  ///< The envelope itself has a later version.
    truncated,         ///< Bytes are missing at the end.
    trailing_bytes,    ///< Bytes follow the content.
    damaged,           ///< The checksum differs.
    wrong_kind,        ///< The content is for another class of buffer.
    newer_version,     ///< The content was written by a newer program.
    invalid_content    ///< The content would not read back as what was written.
};

/// The error in words: "checksum differs".
inline const char* name(data_error error) {
    switch (error) {
    case data_error::none:
        return "no error";
    case data_error::file:
        return "file error";
    case data_error::not_a_data_file:
        return "not a data file";
    case data_error::unknown_envelope:
        return "unknown envelope";
    case data_error::truncated:
        return "truncated";
    case data_error::trailing_bytes:
        return "trailing bytes";
    case data_error::damaged:
        return "checksum differs";
    case data_error::wrong_kind:
        return "wrong kind of content";
    case data_error::newer_version:
        return "newer version";
    case data_error::invalid_content:
        return "invalid content";
    }
    return "unknown";
}

/// The result of storing or loading.
struct data_status {
    data_error error;      ///< `data_error::none` for success.
    std::string message;   ///< The error, with the path of the file; empty for success.
    unsigned long offset;  ///< The byte of the file that it is about; 0 if there is none.
    unsigned version;      ///< The version of the content; 0 if it was not read.

    /// Whether it succeeded. Never fails.
    explicit operator bool() const { return error == data_error::none; }
};

/// A type of item in a text or binary buffer, named after the operations that append and read it.
enum class data_item {
    int8,     ///< `append_int8`
    int16,    ///< `append_int16`
    int32,    ///< `append_int32`
    int64,    ///< `append_int64`
    uint8,    ///< `append_uint8`
    uint16,   ///< `append_uint16`
    uint32,   ///< `append_uint32`
    uint64,   ///< `append_uint64`
    float32,  ///< `append_float`
    float64,  ///< `append_double`
    string,   ///< `append_string`
    buffer    ///< `append_buffer`
};

/// The version and record that a program expects in its data files.
struct data_format {
    /// `version` is stored with the content, and a file with a greater version is rejected.
    /// Increase it when older programs can no longer read the content.
    ///
    /// `record` lists the items of a text or binary buffer, which store no types; the content is
    /// any number of such records. Without it the items are not checked: pass it for files from
    /// untrusted sources.
    data_format(unsigned content_version = 1,
                std::vector<data_item> items = std::vector<data_item>())
        : version(content_version), record(std::move(items)) {}

    unsigned version;               ///< The version of the content.
    std::vector<data_item> record;  ///< The items of one record; empty if they are not checked.
};

namespace _private {

// The envelope. Numbers begin with their least significant byte:
//
//     0   8  "tovadata"
//     8   1  the version of the envelope, 1
//     9   1  the kind of content: 1 text, 2 binary, 3 labeled
//     10  2  zeros
//     12  4  the version of the content
//     16  8  the length of the content in bytes
//     24  8  the checksum of all bytes except these eight
//     32     the content
inline const char* data_magic() {
    return "tovadata";
}
const std::size_t data_magic_size = 8;
const std::size_t data_header_size = 32;
const std::size_t data_checksum_at = 24;

enum class data_kind : unsigned char { text = 1, binary = 2, labeled = 3 };

inline const char* kind_name(unsigned kind) {
    return kind == 1 ? "text" : kind == 2 ? "binary" : kind == 3 ? "labeled" : "unknown";
}

inline std::string data_number(std::uint64_t value, int size) {
    std::string bytes;
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
    return bytes;
}

inline std::uint64_t data_number_at(const std::string& bytes, std::size_t at, int size) {
    std::uint64_t value = 0;
    for (int i = size; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
    return value;
}

// The 64-bit cyclic redundancy check with the reflected ECMA-182 polynomial. It detects every
// change within 64 neighboring bits, which includes every changed byte. It misses one in 2^64 of
// all other changes.
class data_checksum {
public:
    void add(const char* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            m_value =
                m_value >> 8 ^ table()[(m_value ^ static_cast<unsigned char>(bytes[i])) & 255];
    }
    std::uint64_t value() const { return ~m_value; }

private:
    static const std::array<std::uint64_t, 256>& table() {
        static const std::array<std::uint64_t, 256> s_table = make_table();
        return s_table;
    }
    static std::array<std::uint64_t, 256> make_table() {
        std::array<std::uint64_t, 256> table{};
        for (std::uint64_t byte = 0; byte < 256; ++byte) {
            std::uint64_t value = byte;
            for (int bit = 0; bit < 8; ++bit)
                value = (value & 1) != 0 ? value >> 1 ^ 0xC96C5795D7870F42u : value >> 1;
            table[static_cast<std::size_t>(byte)] = value;
        }
        return table;
    }

    std::uint64_t m_value = ~std::uint64_t(0);
};

inline std::uint64_t checksum_of(const std::string& file) {
    data_checksum sum;
    sum.add(file.data(), data_checksum_at);
    sum.add(file.data() + data_header_size, file.size() - data_header_size);
    return sum.value();
}

inline std::string wrap_data(data_kind kind, unsigned version, const std::string& content) {
    std::string file(data_magic());
    file += '\1';
    file += static_cast<char>(kind);
    file.append(2, '\0');
    file += data_number(version, 4) + data_number(content.size(), 8) + std::string(8, '\0');
    file += content;
    file.replace(data_checksum_at, 8, data_number(checksum_of(file), 8));
    return file;
}

// Checks everything except the content itself. The checksum comes before the kind and the version,
// so a damaged file is never reported as a file of another kind or version.
inline data_status check_envelope(const std::string& file, data_kind kind, unsigned version) {
    const std::string start = file.substr(0, data_magic_size);
    if (file.empty())
        return {data_error::truncated, "the file is empty", 0, 0};
    if (std::string(data_magic()).compare(0, start.size(), start) != 0)
        return {data_error::not_a_data_file, "not a data file", 0, 0};
    if (file.size() < data_header_size)
        return {data_error::truncated,
                "truncated, " + std::to_string(file.size()) + " bytes of the header are there",
                file.size(), 0};
    if (file[8] != 1)
        return {data_error::unknown_envelope, "the envelope is of an unknown version", 8, 0};
    const std::uint64_t length = data_number_at(file, 16, 8);
    const std::uint64_t present = file.size() - data_header_size;
    if (present < length)
        return {data_error::truncated,
                "truncated, " + std::to_string(present) + " of " + std::to_string(length) +
                    " bytes of content are there",
                file.size(), 0};
    if (present > length)
        return {data_error::trailing_bytes,
                present - length == 1
                    ? "a byte follows the content"
                    : std::to_string(present - length) + " bytes follow the content",
                data_header_size + length, 0};
    if (checksum_of(file) != data_number_at(file, data_checksum_at, 8))
        return {data_error::damaged, "damaged, the checksum differs", 0, 0};

    const unsigned stored = static_cast<unsigned>(data_number_at(file, 12, 4));
    const unsigned stored_kind = static_cast<unsigned char>(file[9]);
    if (stored_kind != static_cast<unsigned>(kind))
        return {data_error::wrong_kind,
                std::string("the content is ") + kind_name(stored_kind) + ", not " +
                    kind_name(static_cast<unsigned>(kind)),
                9, stored};
    if (file[10] != 0 || file[11] != 0)
        return {data_error::unknown_envelope, "the envelope has unknown flags", 10, stored};
    if (stored > version)
        return {data_error::newer_version,
                "the content has version " + std::to_string(stored) + ", newer than " +
                    std::to_string(version),
                12, stored};
    return {data_error::none, std::string(), 0, stored};
}

// An error in the content and its position in bytes. The reason is null if there is no error.
struct content_problem {
    const char* reason;
    std::size_t offset;
};

// A field of text content: `size` bytes from `begin`. `next` is the byte after its separator.
struct text_field {
    std::size_t begin;
    std::size_t size;
    std::size_t next;
};

const char item_separator = '\1';

// Reads the field from `at` up to the next separator. Returns false if there is none before `end`.
inline bool read_field(const std::string& text, std::size_t at, std::size_t end,
                       text_field& field) {
    const std::size_t separator = text.find(item_separator, at);
    if (separator >= end)
        return false;
    field = text_field{at, separator - at, separator + 1};
    return true;
}

// Reads a string as the buffers write it: its length in decimal, a separator, its bytes, a
// separator. The library also reads lengths that are negative, octal or past the end, but it never
// writes them.
inline bool read_string_field(const std::string& text, std::size_t at, std::size_t end,
                              text_field& field) {
    std::size_t length = 0;
    std::size_t digit = at;
    for (; digit < end && text[digit] >= '0' && text[digit] <= '9'; ++digit) {
        if (digit > at && text[at] == '0')
            return false;
        length = length * 10 + static_cast<std::size_t>(text[digit] - '0');
        if (length > end)
            return false;
    }
    if (digit == at || digit >= end || text[digit] != item_separator || length >= end - digit - 1)
        return false;
    field = text_field{digit + 1, length, digit + 1 + length + 1};
    return text[field.next - 1] == item_separator;
}

// Strings of at least this size can be written but not read back, because lengths are read as 32
// bits.
const std::size_t too_long = static_cast<std::size_t>(std::numeric_limits<int>::max());

// Whether the library would trim the label.
inline bool would_be_trimmed(const std::string& label) {
    const char whitespace[] = " \n\r\t";
    return label.find_first_of(whitespace) == 0 ||
           (!label.empty() && label.find_last_of(whitespace) == label.size() - 1);
}

// Labeled content must be exactly what a tree writes: complete pairs of label and payload, sorted
// by label, and groups of the same form to any depth. Then reading it terminates and loses nothing.
inline content_problem check_labeled(const std::string& text) {
    struct level {
        std::size_t end;         // of the group's text
        std::size_t label;       // the last label: its first byte
        std::size_t label_size;  // its size without the mark of a group
        bool is_value;           // whether it has a value; a group may follow a value
        bool is_empty;           // whether there is no label yet
    };
    std::vector<level> open(1, level{text.size(), 0, 0, false, true});
    std::size_t at = 0;
    for (;;) {
        // The separator of its payload follows a group.
        while (at == open.back().end) {
            open.pop_back();
            if (open.empty())
                return {nullptr, 0};
            ++at;
        }
        level& current = open.back();
        text_field label;
        text_field payload;
        if (!read_string_field(text, at, current.end, label))
            return {"a label is malformed", at};
        if (label.size == 0)
            return {"a label is empty", at};
        if (!read_string_field(text, label.next, current.end, payload))
            return {"a label has no payload", label.next};
        if (label.size >= too_long || payload.size >= too_long)
            return {"a string is too long to be read", label.next};

        const bool is_group = text[label.begin + label.size - 1] == ' ';
        const std::size_t size = label.size - (is_group ? 1 : 0);
        const std::string label_text = text.substr(label.begin, size);
        if (would_be_trimmed(label_text))
            return {"a label has whitespace around it", label.begin};
        const int order =
            current.is_empty ? -1 : text.compare(current.label, current.label_size, label_text);
        if (order > 0 || (order == 0 && !(current.is_value && is_group)))
            return {"the labels are not in order", label.begin};
        current = level{current.end, label.begin, size, !is_group, false};
        at = payload.next;
        if (!is_group)
            continue;
        if (payload.size == 0)
            return {"a group is empty", payload.begin};
        open.push_back(level{payload.begin + payload.size, 0, 0, false, true});
        at = payload.begin;
    }
}

template <typename Integer>
bool is_integer_field(const std::string& digits) {
    const std::size_t first = digits.compare(0, 1, "-") == 0 ? 1 : 0;
    if (digits.compare(0, 1, "+") == 0 || digits == "-0")
        return false;
    return try_parse<Integer>(digits).has_value() &&
           (digits[first] != '0' || digits.size() == first + 1);
}

inline bool is_number_field(const std::string& digits, data_item item) {
    switch (item) {
    case data_item::int8:
        return is_integer_field<signed char>(digits);
    case data_item::int16:
        return is_integer_field<short>(digits);
    case data_item::int32:
        return is_integer_field<int>(digits);
    case data_item::int64:
        return is_integer_field<long>(digits);
    case data_item::uint8:
        return is_integer_field<unsigned char>(digits);
    case data_item::uint16:
        return is_integer_field<unsigned short>(digits);
    case data_item::uint32:
        return is_integer_field<unsigned int>(digits);
    case data_item::uint64:
        return is_integer_field<unsigned long>(digits);
    case data_item::float32:
        return try_parse<float>(digits).has_value();
    case data_item::float64:
        return try_parse<double>(digits).has_value();
    case data_item::string:
    case data_item::buffer:
        break;
    }
    return false;
}

inline content_problem check_text(const std::string& text, const std::vector<data_item>& record) {
    if (!text.empty() && text.back() != item_separator)
        return {"the last item is not closed", text.size()};
    text_field field = {0, 0, 0};
    for (std::size_t at = 0, i = 0; !record.empty() && (at < text.size() || i > 0);
         at = field.next) {
        if (at == text.size())
            return {"the last record is not complete", at};
        const data_item item = record[i];
        if (item == data_item::string || item == data_item::buffer) {
            if (!read_string_field(text, at, text.size(), field))
                return {"a string is malformed", at};
            if (field.size >= too_long)
                return {"a string is too long to be read", at};
        } else if (!read_field(text, at, text.size(), field) ||
                   !is_number_field(text.substr(field.begin, field.size), item)) {
            return {"not a number of its type", at};
        }
        i = (i + 1) % record.size();
    }
    return {nullptr, 0};
}

inline content_problem check_binary(const std::string& bytes,
                                    const std::vector<data_item>& record) {
    for (std::size_t at = 0, i = 0; !record.empty() && (at < bytes.size() || i > 0);) {
        if (at == bytes.size())
            return {"the last record is not complete", at};
        // The sizes of the numbers, in the order of `data_item`. Strings begin with a length of 4
        // bytes.
        const std::size_t sizes[] = {1, 2, 4, 8, 1, 2, 4, 8, 4, 8, 4, 4};
        const data_item item = record[i];
        std::size_t size = sizes[static_cast<std::size_t>(item)];
        if (bytes.size() - at < size)
            return {"an item is cut off", at};
        if (item == data_item::string || item == data_item::buffer)
            size += static_cast<std::size_t>(data_number_at(bytes, at, 4));
        if (bytes.size() - at < size)
            return {"a string is cut off", at};
        at += size;
        i = (i + 1) % record.size();
    }
    return {nullptr, 0};
}

// One overload for each class of buffer: its kind, and the check of its content.
inline data_kind kind_of(const serialization::serialize_text_buf&) {
    return data_kind::text;
}
inline data_kind kind_of(const serialization::serialize_binary_buf&) {
    return data_kind::binary;
}
inline data_kind kind_of(const serialization::labeled_text_buffer&) {
    return data_kind::labeled;
}

inline content_problem check_content(data_kind kind, const std::string& content,
                                     const std::vector<data_item>& record) {
    return kind == data_kind::text     ? check_text(content, record)
           : kind == data_kind::binary ? check_binary(content, record)
                                       : check_labeled(content);
}

inline data_status invalid_content(const content_problem& problem, unsigned version) {
    return {data_error::invalid_content, std::string("invalid content, ") + problem.reason,
            data_header_size + problem.offset, version};
}

template <typename Buffer>
void assign_content(const std::string& content, Buffer& target) {
    target.assign(content);
    target.reset_read();
}
inline void assign_content(const std::string& content, serialization::labeled_text_buffer& target) {
    const serialization::labeled_text_buffer read(content);
    target.assign(read);
}

// Calls `visit(path, group, label)` for each label of a tree, in the order of the labels; the
// labels of a group follow the one of the group. `Tree` may be const.
template <typename Tree, typename Visitor>
void walk_labels(Tree& tree, Visitor& visit) {
    struct level {
        Tree* group;
        std::size_t at;
        std::size_t end;
    };
    // The interface has no list of labels, but a tree writes all of them.
    const std::string text = tree.as_str();
    std::vector<std::string> path;
    std::vector<level> open(1, level{&tree, 0, text.size()});
    while (!open.empty()) {
        level& current = open.back();
        if (current.at == current.end) {
            open.pop_back();
            if (!path.empty())
                path.pop_back();
            continue;
        }
        text_field label;
        text_field payload;
        if (!read_string_field(text, current.at, current.end, label) ||
            !read_string_field(text, label.next, current.end, payload))
            throw std::invalid_argument("the buffer does not write the form of labeled text");
        current.at = payload.next;
        const bool is_group = label.size > 0 && text[label.begin + label.size - 1] == ' ';
        path.push_back(text.substr(label.begin, label.size - (is_group ? 1 : 0)));
        if (is_group) {
            Tree* const group = current.group->retrieve_group(path.back());
            open.push_back(level{group, payload.begin, payload.begin + payload.size});
        } else {
            visit(static_cast<const std::vector<std::string>&>(path), *current.group, path.back());
            path.pop_back();
        }
    }
}

// Returns the number in a variant with all of its digits, or an empty string for any other value.
inline strings::ustring8 exact_digits(const types::variant& value) {
    if (value.type() == typeid(double))
        return exact(value.as_double());
    if (value.type() == typeid(float))
        return exact(value.as_float());
    if (value.type() == typeid(long double))
        return exact(value.as_long_double());
    return strings::ustring8();
}

// Replaces the floating-point numbers in a tree with strings of all their digits.
struct exact_numbers {
    bool found_unreadable = false;  // an infinity or NaN, which would read back as 0

    void operator()(const std::vector<std::string>&, serialization::labeled_serialize_buffer& group,
                    const std::string& label) {
        const strings::ustring8 digits = exact_digits(group.retrieve_value(label));
        if (digits.empty())
            return;
        found_unreadable = found_unreadable || digits.find_first_of("ni") != std::string::npos;
        group.add_value(label, digits);
    }
};

struct has_numbers {
    bool found = false;

    void operator()(const std::vector<std::string>&,
                    const serialization::labeled_serialize_buffer& group,
                    const std::string& label) {
        const std::type_info& type = group.retrieve_value(label).type();
        found =
            found || type == typeid(double) || type == typeid(float) || type == typeid(long double);
    }
};

// Gets the content of a buffer as it is stored. Returns why it cannot be stored, or null.
inline const char* content_of(const serialization::serialize_buffer& source, std::string& content) {
    content = source.as_str();
    return nullptr;
}
inline const char* content_of(const serialization::labeled_text_buffer& source,
                              std::string& content) {
    has_numbers numbers;
    walk_labels<const serialization::labeled_serialize_buffer>(source, numbers);
    if (!numbers.found) {
        content = source.as_str();
        return nullptr;
    }
    serialization::labeled_text_buffer copy(source);
    exact_numbers digits;
    walk_labels<serialization::labeled_serialize_buffer>(copy, digits);
    content = copy.as_str();
    return digits.found_unreadable ? "an infinity or NaN would read back as 0" : nullptr;
}

}  // namespace _private

/// @name In memory
///
/// `encode_data` writes the file's bytes for a `labeled_text_buffer`, `serialize_text_buf` or
/// `serialize_binary_buf`. It rejects content that would not read back: an empty label, a string of
/// 2 GiB or more, an infinity or NaN in a tree, and anything that does not match the record of the
/// format. `float`, `double` and `long double` values of a tree are written with enough digits to
/// restore them exactly.
///
/// `decode_data` reads such bytes into a buffer of the same class. It first checks everything: the
/// content of a tree must be exactly as trees write it, and other content must consist of complete
/// records. Afterwards the read position of the buffer is at the start.
///
/// After an error the target is unchanged. Both raise only `std::bad_alloc`. They take time linear
/// in the size, and a constant amount of stack at any depth.
/// @{
template <typename Buffer>
data_status encode_data(const Buffer& source, std::string& bytes,
                        const data_format& format = data_format()) {
    std::string content;
    const char* const reason = _private::content_of(source, content);
    if (reason != nullptr)
        return {data_error::invalid_content, std::string("invalid content, ") + reason, 0,
                format.version};
    const _private::data_kind kind = _private::kind_of(source);
    const _private::content_problem problem = _private::check_content(kind, content, format.record);
    if (problem.reason != nullptr)
        return _private::invalid_content(problem, format.version);
    bytes = _private::wrap_data(kind, format.version, content);
    return {data_error::none, std::string(), 0, format.version};
}
template <typename Buffer>
data_status decode_data(const std::string& bytes, Buffer& target,
                        const data_format& format = data_format()) {
    const _private::data_kind kind = _private::kind_of(target);
    data_status status = _private::check_envelope(bytes, kind, format.version);
    if (!status)
        return status;
    const std::string content = bytes.substr(_private::data_header_size);
    const _private::content_problem problem = _private::check_content(kind, content, format.record);
    if (problem.reason != nullptr)
        return _private::invalid_content(problem, status.version);
    _private::assign_content(content, target);
    return status;
}
/// @}

/// @name Files
///
/// These do the same as `encode_data` and `decode_data`, with a file. Messages begin with its path.
///
/// `store_data` writes a new file beside the old one, syncs it, renames it and syncs the directory:
/// at any moment, and after a crash, the path leads to either the old or the new content. The mode
/// and, if possible, the owner and group of an existing file are kept. If the path is a link, the
/// file that it leads to is replaced. Pipes, devices and directories are rejected.
/// @{
template <typename Buffer>
data_status store_data(const std::string& path, const Buffer& source,
                       const data_format& format = data_format()) {
    std::string bytes;
    data_status status = encode_data(source, bytes, format);
    if (status) {
        const _private::file_status stored = _private::store_atomically(path, bytes);
        if (!stored)
            status = data_status{data_error::file, stored.message, 0, format.version};
    }
    if (!status)
        status.message = path + ": " + status.message;
    return status;
}
template <typename Buffer>
data_status load_data(const std::string& path, Buffer& target,
                      const data_format& format = data_format()) {
    std::string bytes;
    const _private::file_status read = _private::read_whole(path, bytes);
    data_status status = read ? decode_data(bytes, target, format)
                              : data_status{data_error::file, read.message, 0, 0};
    if (!status)
        status.message = path + ": " + status.message;
    return status;
}
/// @}

/// Calls `visit(path, value)` for every label of a tree that has a value or is empty, in the order
/// of the labels' bytes, and descends into groups.
///
/// `path` is a `const std::vector<std::string>&`, from the outermost group to the label itself; it
/// is valid during the call. `value` is a `types::variant` of the original type, or nil for a label
/// without a value. A label with both a value and a group is visited before its group. The visitor
/// may replace values, but not add or remove labels. The tree is a `labeled_text_buffer` or a group
/// of one; a buffer of a class with another encoding makes `walk` raise `std::invalid_argument`.
template <typename Visitor>
void walk(const serialization::labeled_serialize_buffer& tree, Visitor&& visit) {
    auto each = [&visit](const std::vector<std::string>& path,
                         const serialization::labeled_serialize_buffer& group,
                         const std::string& label) { visit(path, group.retrieve_value(label)); };
    _private::walk_labels<const serialization::labeled_serialize_buffer>(tree, each);
}

/// Returns the labels of a tree or group, without those of its groups, in the order of their bytes.
/// Takes time linear in the size of the whole tree. Raises the same exceptions as `walk`.
inline std::vector<std::string> labels(const serialization::labeled_serialize_buffer& tree) {
    const std::string text = tree.as_str();
    std::vector<std::string> found;
    for (std::size_t at = 0; at < text.size();) {
        _private::text_field label;
        _private::text_field payload;
        if (!_private::read_string_field(text, at, text.size(), label) ||
            !_private::read_string_field(text, label.next, text.size(), payload))
            throw std::invalid_argument("the buffer does not write the form of labeled text");
        const bool is_group = label.size > 0 && text[label.begin + label.size - 1] == ' ';
        const std::string name = text.substr(label.begin, label.size - (is_group ? 1 : 0));
        if (found.empty() || found.back() != name)
            found.push_back(name);
        at = payload.next;
    }
    return found;
}

/// Removes a label with its value and its group. The label is not trimmed. Returns whether it was
/// there.
///
/// The tree is a `labeled_text_buffer` or a group of one; a buffer of any other class raises
/// `std::bad_cast`. Everything else is kept, including types, but all pointers to groups of the
/// tree become invalid. Takes time linear in the size of the tree.
inline bool remove_label(serialization::labeled_serialize_buffer& tree, const std::string& label) {
    using serialization::labeled_text_buffer;
    labeled_text_buffer& target = dynamic_cast<labeled_text_buffer&>(tree);
    if (!target.has_label(label))
        return false;
    labeled_text_buffer rest;
    for (const std::string& name : labels(target)) {
        if (name == label)
            continue;
        labeled_text_buffer& group = dynamic_cast<labeled_text_buffer&>(*rest.create_group(name));
        group.assign(dynamic_cast<const labeled_text_buffer&>(*target.retrieve_group(name)));
        rest.add_value(name, target.retrieve_value(name));
    }
    target.assign(rest);
    return true;
}

/// @name Values of a label
///
/// Reads the value of a label as a string, or as a number with `try_parse`. A label without a value
/// is the error `check_error::empty`. Unlike the `as_` conversions, these never round or truncate
/// another number to an integer: 2.5 and 300 are errors for a `signed char`.
/// @{
template <typename Value>
typename std::enable_if<std::is_arithmetic<Value>::value && !std::is_same<Value, bool>::value,
                        checked<Value>>::type
retrieve(const serialization::labeled_serialize_buffer& tree, const std::string& label) {
    const types::variant value = tree.retrieve_value(label);
    const strings::ustring8 digits = _private::exact_digits(value);
    return try_parse<Value>(digits.empty() ? value.as_string() : digits);
}
template <typename Value>
typename std::enable_if<std::is_base_of<std::string, Value>::value, checked<Value>>::type
retrieve(const serialization::labeled_serialize_buffer& tree, const std::string& label) {
    if (!tree.has_value(label))
        return {check_error::empty, 0};
    return Value(tree.retrieve_value(label).as_string());
}
/// @}

}  // namespace extras
}  // namespace TOVA_2_18
