// Tests the reader of data files with forged content that has a correct checksum.
//
// Input: one byte for the number of items in a record, one byte for each item, and the content. The
// whole input is also read as a file.
#include <tova/extras/data_file.hpp>

#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace tova;
using extras::data_error;
using extras::data_format;
using extras::data_item;
using extras::data_status;
using fuzz_support::require;
using serialization::labeled_text_buffer;
using serialization::serialize_binary_buf;
using serialization::serialize_buffer;
using serialization::serialize_text_buf;

const char kept[] = "1\1";

void read_item(const serialize_buffer& buffer, data_item item) {
    switch (item) {
    case data_item::int8:
        buffer.read_int8();
        break;
    case data_item::int16:
        buffer.read_int16();
        break;
    case data_item::int32:
        buffer.read_int32();
        break;
    case data_item::int64:
        buffer.read_int64();
        break;
    case data_item::uint8:
        buffer.read_uint8();
        break;
    case data_item::uint16:
        buffer.read_uint16();
        break;
    case data_item::uint32:
        buffer.read_uint32();
        break;
    case data_item::uint64:
        buffer.read_uint64();
        break;
    case data_item::float32:
        buffer.read_float();
        break;
    case data_item::float64:
        buffer.read_double();
        break;
    case data_item::string:
        buffer.read_string();
        break;
    case data_item::buffer:
        delete buffer.read_buffer();
        break;
    }
}

// Accepted content consists of complete records, which are read item by item up to the end.
template <typename Buffer>
void read_records(const std::string& content, const std::vector<data_item>& record) {
    const data_format format(1, record);
    Buffer buffer(kept);
    const std::string file =
        extras::_private::wrap_data(extras::_private::kind_of(buffer), 1, content);
    const data_status status = extras::decode_data(file, buffer, format);
    require(buffer.as_str() == (status ? content : kept));
    require(status || !status.message.empty());
    if (!status || record.empty())
        return;
    // An item has at least one byte, so a loop that runs longer than this does not advance.
    for (std::size_t reads = 0; !buffer.at_end(); ++reads) {
        require(reads <= content.size());
        for (const data_item item : record)
            read_item(buffer, item);
    }
    std::string again;
    require(bool(extras::encode_data(buffer, again, format)) && again == file);
}

// Accepted content is exactly what the tree writes.
void read_tree(const std::string& content) {
    labeled_text_buffer tree;
    tree.add_value("kept", 1);
    const std::string before = tree.as_str();
    const std::string file =
        extras::_private::wrap_data(extras::_private::data_kind::labeled, 1, content);
    const data_status status = extras::decode_data(file, tree);
    require(tree.as_str() == (status ? content : before));
    if (!status) {
        require(!status.message.empty() && status.offset <= file.size());
        return;
    }
    std::string again;
    require(bool(extras::encode_data(tree, again)) && again == file);
    std::size_t count = 0;
    extras::walk(tree, [&count](const std::vector<std::string>& path, const types::variant&) {
        require(!path.empty());
        ++count;
    });
    require((count == 0) == content.empty());
    for (const std::string& label : extras::labels(tree))
        require(extras::remove_label(tree, label));
    require(tree.is_empty());
}

// A file without a correct checksum is rejected. Any other file is identical when it is written
// again.
template <typename Buffer>
void read_file(const std::string& file) {
    Buffer buffer;
    const data_status status = extras::decode_data(file, buffer, 0xFFFFFFFFu);
    require(bool(status) == status.message.empty());
    std::string again;
    if (status)
        require(bool(extras::encode_data(buffer, again, status.version)) && again == file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const std::string input(reinterpret_cast<const char*>(data), size);
    read_file<labeled_text_buffer>(input);
    read_file<serialize_text_buf>(input);
    read_file<serialize_binary_buf>(input);
    if (size == 0)
        return 0;
    const std::size_t items = data[0] % 8;
    if (size < 1 + items)
        return 0;
    std::vector<data_item> record;
    for (std::size_t i = 0; i < items; ++i)
        record.push_back(static_cast<data_item>(data[1 + i] % 12));
    const std::string content = input.substr(1 + items);
    read_records<serialize_text_buf>(content, record);
    read_records<serialize_binary_buf>(content, record);
    read_tree(content);
    return 0;
}
