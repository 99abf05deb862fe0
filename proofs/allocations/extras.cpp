// The add-ons that allocate. They exist only in headers, so their functions are compiled here.
#include "trial.hpp"

#include <tova/extras/checked.hpp>
#include <tova/extras/data_file.hpp>
#include <tova/extras/dates.hpp>

namespace proof {

using namespace tova;
using serialization::labeled_text_buffer;
using strings::ustring8;
using types::variant;

namespace {

// Longer than what a string holds without an allocation.
const char long_text[] = "Gr\xC3\xBC\xC3\x9F Gott, \xC3\x96sterreich, und guten Tag";

labeled_text_buffer tree() {
    labeled_text_buffer buffer;
    buffer.add_value("label", variant(long_text));
    buffer.add_value("number", variant(42));
    buffer.create_group("group")->add_value("inner", variant(long_text));
    return buffer;
}

void checked_conversions(trial& t) {
    const ustring8 text(long_text);
    const auto units = strings::utf8_to_utf16(text);
    const auto wide = strings::utf8_to_utf32(text);
    const strings::code_page page(strings::code_page::encoding_1252);
    t([&] { return extras::try_utf8_to_utf16(text).value(); });
    t([&] { return extras::try_utf8_to_utf32(text).value(); });
    t([&] { return extras::try_utf16_to_utf8(units).value(); });
    t([&] { return extras::try_utf32_to_utf8(wide).value(); });
    t([&] { return extras::try_encode(page, text).value(); });
}

void iso_dates(trial& t) {
    const system::date_time::date date(3, 2, 2026);
    const system::date_time::time time(9, 5, 7, 250);
    const system::date_time::date_time_t both(date, time);
    const std::string text("2026-02-03T09:05:07.250");
    t([&] { return extras::to_iso(date); });
    t([&] { return extras::to_iso(time); });
    t([&] { return extras::to_iso(both); });
    t([&] { return extras::to_iso(extras::date_time_from_iso(text).value); });
}

void data_in_memory(trial& t) {
    const labeled_text_buffer source = tree();
    std::string bytes;
    extras::encode_data(source, bytes);
    t([&] {
        std::string written;
        const auto status = extras::encode_data(source, written);
        return status.message + written;
    });
    t([&] {
        labeled_text_buffer target;
        const auto status = extras::decode_data(bytes, target);
        return status.message + target.as_str();
    });
    t([&] {
        labeled_text_buffer target;
        return extras::decode_data(bytes.substr(0, 40), target).message;
    });
}

void data_files(trial& t) {
    const labeled_text_buffer source = tree();
    t([&] { return extras::store_data("allocations.dat", source).message; });
    extras::store_data("allocations.dat", source);
    t([&] {
        labeled_text_buffer target;
        const auto status = extras::load_data("allocations.dat", target);
        return status.message + target.as_str();
    });
    t([&] {
        labeled_text_buffer target;
        return extras::load_data("there is no such file", target).message;
    });
}

void labels_of_a_tree(trial& t) {
    const labeled_text_buffer source = tree();
    t([&] { return extras::labels(source).size(); });
    t([&] {
        std::string found;
        extras::walk(source, [&](const std::vector<std::string>& path, const variant&) {
            found += path.back();
        });
        return found;
    });
    labeled_text_buffer changed = tree();
    t([&] { return extras::remove_label(changed, "label"); });
}

}  // namespace

void add_extras(scenarios& all) {
    all.push_back({"add-ons: checked conversions", checked_conversions, never_ends});
    all.push_back({"add-ons: ISO dates", iso_dates, never_ends});
    all.push_back({"add-ons: data in memory", data_in_memory, may_end});
    all.push_back({"add-ons: data files", data_files, may_end});
    all.push_back({"add-ons: labels of a tree", labels_of_a_tree, may_end});
}

}  // namespace proof
