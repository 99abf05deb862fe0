// Records and trees to bytes and back.
//
// records: many records of mixed fields with a nested one. Compact encodings are compared with
// `serialize_binary_buf`, text encodings with `serialize_text_buf`.
// tree: a labeled tree of 10,000 entries with a depth of 8.
//
// All encodings produce one string in memory and read the records back into the same structures.
// Each is checked once before it is measured. The plain forms have the encodings of our buffers,
// which is checked, too. Those of the tree are recursive and copy the text of each group. The
// floors copy what the result consists of: fields to bytes and back, the known text, the labels and
// values of the tree, or the tree.
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>

#include "serialization/tree_model.hpp"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#ifdef HAVE_CEREAL
#include <cereal/archives/binary.hpp>
#include <cereal/archives/json.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#endif
#ifdef HAVE_MSGPACK
#include <msgpack.hpp>
#endif
#ifdef HAVE_BOOST_SERIALIZATION
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#endif
#ifdef HAVE_QT6
#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#include <QVariantMap>
#endif

namespace {

using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_buffer;
using tova::serialization::serialize_text_buf;

struct place {
    std::int32_t id = 0;
    double weight = 0;
    std::string name;

    bool operator==(const place& other) const {
        return id == other.id && weight == other.weight && name == other.name;
    }
    template <typename Archive>
    void serialize(Archive& archive) {
        archive& id& weight& name;
    }
#ifdef HAVE_MSGPACK
    MSGPACK_DEFINE(id, weight, name)
#endif
};

struct record {
    signed char i8 = 0;
    std::int16_t i16 = 0;
    std::int32_t i32 = 0;
    std::int64_t i64 = 0;
    unsigned char u8 = 0;
    std::uint16_t u16 = 0;
    std::uint32_t u32 = 0;
    std::uint64_t u64 = 0;
    float single = 0;
    double real = 0;
    std::string title;
    std::string remark;
    place where;

    bool operator==(const record& other) const {
        return i8 == other.i8 && i16 == other.i16 && i32 == other.i32 && i64 == other.i64 &&
               u8 == other.u8 && u16 == other.u16 && u32 == other.u32 && u64 == other.u64 &&
               single == other.single && real == other.real && title == other.title &&
               remark == other.remark && where == other.where;
    }
    template <typename Archive>
    void serialize(Archive& archive) {
        archive& i8& i16& i32& i64& u8& u16& u32& u64& single& real& title& remark& where;
    }
#ifdef HAVE_MSGPACK
    MSGPACK_DEFINE(i8, i16, i32, i64, u8, u16, u32, u64, single, real, title, remark, where)
#endif
};

}  // namespace

#ifdef HAVE_BOOST_SERIALIZATION
namespace boost {
namespace serialization {

template <typename Archive>
void serialize(Archive& archive, place& value, unsigned) {
    value.serialize(archive);
}

template <typename Archive>
void serialize(Archive& archive, record& value, unsigned) {
    value.serialize(archive);
}

}  // namespace serialization
}  // namespace boost
#endif

namespace {

std::vector<record> make_records() {
    std::vector<record> made(100);
    int number = 0;
    for (record& one : made) {
        ++number;
        one.i8 = static_cast<signed char>(-number);
        one.i16 = static_cast<std::int16_t>(-100 * number);
        one.i32 = 1000000 + number;
        one.i64 = -5000000000l * number;
        one.u8 = static_cast<unsigned char>(number);
        one.u16 = static_cast<std::uint16_t>(500 * number);
        one.u32 = 3000000000u + static_cast<unsigned>(number);
        one.u64 = 10000000000000000000ul + static_cast<unsigned long>(number);
        one.single = 0.25f * static_cast<float>(number);
        one.real = 1.5 * number;
        one.title = "record " + std::to_string(number);
        one.remark = "a remark that is a good deal longer than any short string";
        one.where.id = number;
        one.where.weight = number + 0.125;
        one.where.name = "place";
    }
    return made;
}

const std::vector<record>& records() {
    static const std::vector<record> made = make_records();
    return made;
}

// Six digits represent all our floating-point values exactly.
void append(serialize_buffer& buffer, const place& value) {
    buffer.append_int32(value.id);
    buffer.append_double(value.weight, 6);
    buffer.append_string(value.name);
}

template <typename Buffer>
std::string write_tova(const std::vector<record>& values) {
    Buffer buffer;
    buffer.append_uint32(static_cast<unsigned>(values.size()));
    for (const record& value : values) {
        buffer.append_int8(value.i8);
        buffer.append_int16(value.i16);
        buffer.append_int32(value.i32);
        buffer.append_int64(value.i64);
        buffer.append_uint8(value.u8);
        buffer.append_uint16(value.u16);
        buffer.append_uint32(value.u32);
        buffer.append_uint64(value.u64);
        buffer.append_float(value.single, 6);
        buffer.append_double(value.real, 6);
        buffer.append_string(value.title);
        buffer.append_string(value.remark);
        append(buffer, value.where);
    }
    return buffer.as_str();
}

template <typename Buffer>
std::vector<record> read_tova(const std::string& bytes) {
    const Buffer buffer(bytes);
    std::vector<record> values(buffer.read_uint32());
    for (record& value : values) {
        value.i8 = buffer.read_int8();
        value.i16 = buffer.read_int16();
        value.i32 = buffer.read_int32();
        value.i64 = buffer.read_int64();
        value.u8 = buffer.read_uint8();
        value.u16 = buffer.read_uint16();
        value.u32 = buffer.read_uint32();
        value.u64 = buffer.read_uint64();
        value.single = buffer.read_float();
        value.real = buffer.read_double();
        value.title = buffer.read_string();
        value.remark = buffer.read_string();
        value.where.id = buffer.read_int32();
        value.where.weight = buffer.read_double();
        value.where.name = buffer.read_string();
    }
    return values;
}

// The minimum: the same bytes as `serialize_binary_buf`, by plain copies.
class copier {
public:
    std::string bytes;

    template <typename Value>
    copier& operator&(const Value& value) {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
        return *this;
    }
    copier& operator&(const std::string& text) {
        *this& static_cast<std::uint32_t>(text.size());
        bytes += text;
        return *this;
    }
    copier& operator&(const place& value) {
        const_cast<place&>(value).serialize(*this);
        return *this;
    }
};

class restorer {
public:
    explicit restorer(const std::string& bytes) : m_at(bytes.data()) {}

    template <typename Value>
    restorer& operator&(Value& value) {
        std::memcpy(&value, m_at, sizeof value);
        m_at += sizeof value;
        return *this;
    }
    restorer& operator&(std::string& text) {
        std::uint32_t length;
        *this& length;
        text.assign(m_at, length);
        m_at += length;
        return *this;
    }
    restorer& operator&(place& value) {
        value.serialize(*this);
        return *this;
    }

private:
    const char* m_at;
};

std::string write_copies(const std::vector<record>& values) {
    copier out;
    out& static_cast<std::uint32_t>(values.size());
    for (const record& value : values)
        const_cast<record&>(value).serialize(out);
    return out.bytes;
}

std::vector<record> read_copies(const std::string& bytes) {
    restorer in(bytes);
    std::uint32_t count;
    in& count;
    std::vector<record> values(count);
    for (record& value : values)
        value.serialize(in);
    return values;
}

// Ours without the fast paths: a string for each value, and streams for floating-point numbers.
class plain_writer {
public:
    std::string text;

    template <typename Integer>
    plain_writer& operator&(Integer value) {
        text += std::to_string(value) + '\x01';
        return *this;
    }
    plain_writer& operator&(double value) {
        std::ostringstream stream;
        stream << value;
        text += stream.str() + '\x01';
        return *this;
    }
    plain_writer& operator&(float value) { return *this & static_cast<double>(value); }
    plain_writer& operator&(const std::string& value) {
        text += std::to_string(value.size()) + '\x01' + value + '\x01';
        return *this;
    }
    plain_writer& operator&(const place& value) {
        const_cast<place&>(value).serialize(*this);
        return *this;
    }
};

class plain_reader {
public:
    explicit plain_reader(const std::string& text) : m_text(text) {}

    template <typename Number>
    plain_reader& operator&(Number& value) {
        const std::size_t end = m_text.find('\x01', m_position);
        std::istringstream stream(m_text.substr(m_position, end - m_position));
        m_position = end + 1;
        if constexpr (sizeof value == 1) {
            int wide = 0;
            stream >> wide;
            value = static_cast<Number>(wide);
        } else {
            stream >> value;
        }
        return *this;
    }
    plain_reader& operator&(std::string& value) {
        std::size_t length = 0;
        *this& length;
        value = m_text.substr(m_position, length);
        m_position += length + 1;
        return *this;
    }
    plain_reader& operator&(place& value) {
        value.serialize(*this);
        return *this;
    }

private:
    const std::string& m_text;
    std::size_t m_position = 0;
};

std::string write_plain(const std::vector<record>& values) {
    plain_writer out;
    out& values.size();
    for (const record& value : values)
        const_cast<record&>(value).serialize(out);
    return out.text;
}

std::vector<record> read_plain(const std::string& text) {
    plain_reader in(text);
    std::size_t count = 0;
    in& count;
    std::vector<record> values(count);
    for (record& value : values)
        value.serialize(in);
    return values;
}

// The same for the other encoding: a string of each value's bytes, and a part of the content.
class plain_byte_writer {
public:
    std::string bytes;

    template <typename Value>
    plain_byte_writer& operator&(const Value& value) {
        bytes += std::string(reinterpret_cast<const char*>(&value), sizeof value);
        return *this;
    }
    plain_byte_writer& operator&(const std::string& text) {
        *this& static_cast<std::uint32_t>(text.size());
        bytes += text;
        return *this;
    }
    plain_byte_writer& operator&(const place& value) {
        const_cast<place&>(value).serialize(*this);
        return *this;
    }
};

class plain_byte_reader {
public:
    explicit plain_byte_reader(const std::string& bytes) : m_bytes(bytes) {}

    template <typename Value>
    plain_byte_reader& operator&(Value& value) {
        const std::string part = m_bytes.substr(m_position, sizeof value);
        std::memcpy(&value, part.data(), part.size());
        m_position += sizeof value;
        return *this;
    }
    plain_byte_reader& operator&(std::string& text) {
        std::uint32_t length = 0;
        *this& length;
        text = m_bytes.substr(m_position, length);
        m_position += length;
        return *this;
    }
    plain_byte_reader& operator&(place& value) {
        value.serialize(*this);
        return *this;
    }

private:
    const std::string& m_bytes;
    std::size_t m_position = 0;
};

std::string write_plain_bytes(const std::vector<record>& values) {
    plain_byte_writer out;
    out& static_cast<std::uint32_t>(values.size());
    for (const record& value : values)
        const_cast<record&>(value).serialize(out);
    return out.bytes;
}

std::vector<record> read_plain_bytes(const std::string& bytes) {
    plain_byte_reader in(bytes);
    std::uint32_t count = 0;
    in& count;
    std::vector<record> values(count);
    for (record& value : values)
        value.serialize(in);
    return values;
}

#ifdef HAVE_CEREAL
template <typename Archive>
std::string write_cereal(const std::vector<record>& values) {
    std::ostringstream stream;
    {
        Archive archive(stream);
        archive(values);
    }
    return stream.str();
}

template <typename Archive>
std::vector<record> read_cereal(const std::string& bytes) {
    std::istringstream stream(bytes);
    Archive archive(stream);
    std::vector<record> values;
    archive(values);
    return values;
}
#endif

#ifdef HAVE_MSGPACK
std::string write_msgpack(const std::vector<record>& values) {
    msgpack::sbuffer buffer;
    msgpack::pack(buffer, values);
    return std::string(buffer.data(), buffer.size());
}

std::vector<record> read_msgpack(const std::string& bytes) {
    std::vector<record> values;
    msgpack::unpack(bytes.data(), bytes.size()).get().convert(values);
    return values;
}
#endif

#ifdef HAVE_BOOST_SERIALIZATION
template <typename Archive>
std::string write_boost(const std::vector<record>& values) {
    std::ostringstream stream;
    {
        Archive archive(stream, boost::archive::no_header);
        archive << values;
    }
    return stream.str();
}

template <typename Archive>
std::vector<record> read_boost(const std::string& bytes) {
    std::istringstream stream(bytes);
    Archive archive(stream, boost::archive::no_header);
    std::vector<record> values;
    archive >> values;
    return values;
}
#endif

#ifdef HAVE_QT6
QByteArray raw(const std::string& text) {
    return QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
}

std::string text_of(const QByteArray& bytes) {
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

std::string write_qt(const std::vector<record>& values) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << static_cast<quint32>(values.size());
    for (const record& value : values) {
        stream << static_cast<qint8>(value.i8) << value.i16 << value.i32
               << static_cast<qint64>(value.i64) << static_cast<quint8>(value.u8) << value.u16
               << value.u32 << static_cast<quint64>(value.u64);
        stream << value.single << value.real << raw(value.title) << raw(value.remark)
               << value.where.id << value.where.weight << raw(value.where.name);
    }
    return text_of(bytes);
}

std::vector<record> read_qt(const std::string& bytes) {
    QDataStream stream(raw(bytes));
    stream.setByteOrder(QDataStream::LittleEndian);
    quint32 count;
    stream >> count;
    std::vector<record> values(count);
    for (record& value : values) {
        qint8 i8;
        qint64 i64;
        quint8 u8;
        quint64 u64;
        QByteArray title, remark, name;
        stream >> i8 >> value.i16 >> value.i32 >> i64 >> u8 >> value.u16 >> value.u32 >> u64;
        stream >> value.single >> value.real >> title >> remark >> value.where.id >>
            value.where.weight >> name;
        value.i8 = i8;
        value.i64 = i64;
        value.u8 = u8;
        value.u64 = u64;
        value.title = text_of(title);
        value.remark = text_of(remark);
        value.where.name = text_of(name);
    }
    return values;
}
#endif

typedef std::string (*writer)(const std::vector<record>&);
typedef std::vector<record> (*reader)(const std::string&);

void bench_write(benchmark::State& state, writer write, reader read) {
    if (!(read(write(records())) == records()))
        state.SkipWithError("the records don't come back");
    for (auto unused : state)
        benchmark::DoNotOptimize(write(records()));
}

void bench_read(benchmark::State& state, writer write, reader read) {
    const std::string bytes = write(records());
    if (!(read(bytes) == records()))
        state.SkipWithError("the records don't come back");
    for (auto unused : state)
        benchmark::DoNotOptimize(read(bytes));
}

// The plain forms write the bytes of our buffers.
bool is_plain_equal() {
    return write_plain(records()) == write_tova<serialize_text_buf>(records()) &&
           write_plain_bytes(records()) == write_tova<serialize_binary_buf>(records());
}

void register_records(const std::string& encoding, const std::string& library, writer write,
                      reader read) {
    benchmark::RegisterBenchmark(("write/" + encoding + "/" + library).c_str(), bench_write, write,
                                 read);
    benchmark::RegisterBenchmark(("read/" + encoding + "/" + library).c_str(), bench_read, write,
                                 read);
}

// 10,000 values on 8 levels: each group gets 5 values and up to 4 groups, until all are placed.
// Every library is filled in the same order.
template <typename Group>
void fill(Group& group, int depth, int& left) {
    for (int i = 0; i < 5 && left > 0; ++i, --left)
        group.add("value" + std::to_string(i), "text of the value " + std::to_string(left));
    for (int i = 0; i < 4 && left > 0 && depth > 1; ++i) {
        group.nested("group" + std::to_string(i),
                     [&](Group& inner) { fill(inner, depth - 1, left); });
    }
}

class tova_group {
public:
    explicit tova_group(labeled_serialize_buffer& buffer) : m_buffer(&buffer) {}
    void add(const std::string& label, const std::string& value) {
        m_buffer->add_value(label, value);
    }
    template <typename Body>
    void nested(const std::string& label, const Body& body) {
        tova_group inner(*m_buffer->create_group(label));
        body(inner);
    }

private:
    labeled_serialize_buffer* m_buffer;
};

const int entry_count = 10000;
const int levels = 8;

labeled_text_buffer make_tree() {
    labeled_text_buffer tree;
    tova_group root(tree);
    int left = entry_count;
    fill(root, levels, left);
    if (left != 0)
        throw std::logic_error("the tree is too small");
    return tree;
}

void build_tree(benchmark::State& state) {
    for (auto unused : state)
        benchmark::DoNotOptimize(make_tree());
}

void write_tree(benchmark::State& state) {
    const labeled_text_buffer tree = make_tree();
    for (auto unused : state)
        benchmark::DoNotOptimize(tree.as_str().data());
}

void read_tree(benchmark::State& state) {
    const std::string text = make_tree().as_str();
    for (auto unused : state)
        benchmark::DoNotOptimize(labeled_text_buffer(text));
}

void read_plain_group(labeled_serialize_buffer& group, const std::string& bytes) {
    const serialize_text_buf text(bytes);
    while (!text.at_end()) {
        const std::string label = text.read_string();
        if (label.back() == ' ')
            read_plain_group(*group.create_group(label), text.read_string());
        else
            group.add_value(label, text.read_string());
    }
}

void read_plain_tree(benchmark::State& state) {
    const std::string text = make_tree().as_str();
    for (auto unused : state) {
        labeled_text_buffer tree;
        read_plain_group(tree, text);
        benchmark::DoNotOptimize(&tree);
    }
}

void write_plain_tree(benchmark::State& state) {
    const std::string text = make_tree().as_str();
    test_support::tree_model tree;
    if (tree.read(text) != test_support::tree_model::complete || tree.encode() != text)
        state.SkipWithError("another text");
    for (auto unused : state)
        benchmark::DoNotOptimize(tree.encode());
}

// The floor of writing: every item of the text, from a string of its own.
void write_tree_floor(benchmark::State& state) {
    const std::string text = make_tree().as_str();
    std::vector<std::string> items;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\x01', begin) + 1;
        items.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    for (auto unused : state) {
        std::string written;
        for (const std::string& item : items)
            written += item;
        if (written.size() != text.size())
            state.SkipWithError("another length");
        benchmark::DoNotOptimize(written.data());
    }
}

// The floors of the text encoding of records: the known string and the known records.
void write_text_floor(benchmark::State& state) {
    const std::string text = write_tova<serialize_text_buf>(records());
    for (auto unused : state)
        benchmark::DoNotOptimize(std::string(text));
}

void read_text_floor(benchmark::State& state) {
    for (auto unused : state)
        benchmark::DoNotOptimize(std::vector<record>(records()));
}

void copy_tree(benchmark::State& state) {
    const labeled_text_buffer tree = make_tree();
    for (auto unused : state) {
        labeled_text_buffer copy(tree);
        benchmark::DoNotOptimize(&copy);
    }
}

#ifdef HAVE_QT6
class qt_group {
public:
    void add(const std::string& label, const std::string& value) {
        map.insert(QString::fromStdString(label), QByteArray::fromStdString(value));
    }
    template <typename Body>
    void nested(const std::string& label, const Body& body) {
        qt_group inner;
        body(inner);
        map.insert(QString::fromStdString(label), inner.map);
    }
    QVariantMap map;
};

QVariantMap make_qt_tree() {
    qt_group root;
    int left = entry_count;
    fill(root, levels, left);
    return root.map;
}

QByteArray qt_bytes(const QVariantMap& map) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << map;
    return bytes;
}

void build_qt_tree(benchmark::State& state) {
    for (auto unused : state)
        benchmark::DoNotOptimize(make_qt_tree());
}

void write_qt_tree(benchmark::State& state) {
    const QVariantMap map = make_qt_tree();
    for (auto unused : state)
        benchmark::DoNotOptimize(qt_bytes(map));
}

void read_qt_tree(benchmark::State& state) {
    const QByteArray bytes = qt_bytes(make_qt_tree());
    for (auto unused : state) {
        QDataStream stream(bytes);
        QVariantMap map;
        stream >> map;
        benchmark::DoNotOptimize(&map);
    }
}
#endif

bool register_all() {
    if (!is_plain_equal())
        throw std::logic_error("the plain forms have another encoding");
    register_records("bytes", "tova", write_tova<serialize_binary_buf>,
                     read_tova<serialize_binary_buf>);
    register_records("bytes", "floor", write_copies, read_copies);
    register_records("bytes", "plain", write_plain_bytes, read_plain_bytes);
    register_records("text", "tova", write_tova<serialize_text_buf>, read_tova<serialize_text_buf>);
    register_records("text", "plain", write_plain, read_plain);
#ifdef HAVE_CEREAL
    register_records("bytes", "cereal", write_cereal<cereal::BinaryOutputArchive>,
                     read_cereal<cereal::BinaryInputArchive>);
    register_records("text", "cereal", write_cereal<cereal::JSONOutputArchive>,
                     read_cereal<cereal::JSONInputArchive>);
#endif
#ifdef HAVE_MSGPACK
    register_records("bytes", "msgpack", write_msgpack, read_msgpack);
#endif
#ifdef HAVE_BOOST_SERIALIZATION
    register_records("bytes", "boost", write_boost<boost::archive::binary_oarchive>,
                     read_boost<boost::archive::binary_iarchive>);
    register_records("text", "boost", write_boost<boost::archive::text_oarchive>,
                     read_boost<boost::archive::text_iarchive>);
#endif
    const auto in_us = [](const char* name, void (*body)(benchmark::State&)) {
        benchmark::RegisterBenchmark(name, body)->Unit(benchmark::kMicrosecond);
    };
    in_us("build/tree/tova", build_tree);
    in_us("write/tree/tova", write_tree);
    in_us("read/tree/tova", read_tree);
    in_us("copy/tree/tova", copy_tree);
    in_us("write/tree/plain", write_plain_tree);
    in_us("read/tree/plain", read_plain_tree);
    in_us("write/tree/floor", write_tree_floor);
    in_us("read/tree/floor", copy_tree);
    in_us("write/text/floor", write_text_floor);
    in_us("read/text/floor", read_text_floor);
#ifdef HAVE_QT6
    register_records("bytes", "qt", write_qt, read_qt);
    in_us("build/tree/qt", build_qt_tree);
    in_us("write/tree/qt", write_qt_tree);
    in_us("read/tree/qt", read_qt_tree);
#endif
    return true;
}

const bool registered = register_all();

}  // namespace
