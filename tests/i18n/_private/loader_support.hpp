// Helpers for the tests of the loader: the outcome of an operation, files read from bytes, and
// token lists for the grammar operations.
#pragma once

#include "i18n/catalog_text.hpp"
#include <tova/i18n/_private/xmc_file_loader.hpp>

#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <string>
#include <utility>

namespace test_support {

using load_error = tova::i18n::_private::xmc_file_loader::load_error;
using token = tova::parser::xml_token_stream::token;

// The kind and the message of an error.
using outcome = std::pair<int, std::string>;

const std::string front = "xmc_file_loader::load_error - ";

inline outcome seen(const load_error& error) {
    return outcome(error.type, error.message);
}

// The error that an operation throws.
template <typename Operation>
outcome thrown(Operation operation) {
    try {
        operation();
    } catch (const load_error& error) {
        return seen(error);
    }
    return outcome(-1, "nothing thrown");
}

// The outcome of reading a file from its bytes for a requested locale.
inline outcome parse(const std::string& bytes, const std::string& locale = "en") {
    tova::i18n::_private::xmc_file_loader loader;
    loader.handle_language(locale);
    return seen(loader.parse_string(bytes, "f.xmc"));
}

// The catalogs of a file without errors.
inline loaded_catalogs load(const std::string& bytes, const std::string& locale = "en") {
    tova::i18n::_private::xmc_file_loader loader;
    loader.handle_language(locale);
    const load_error error = loader.parse_string(bytes, "f.xmc");
    EXPECT_EQ(tova::i18n::_private::xmc_file_loader::no_error, error.type) << error.message;
    return combined(loader);
}

// A token list, and the two iterators that the grammar operations take.
struct walk {
    explicit walk(std::list<token> list) : tokens(std::move(list)) { rewind(); }
    void rewind() {
        cursor = tokens.begin();
        end = tokens.end();
    }
    long taken() const {
        return std::distance(std::list<token>::const_iterator(tokens.begin()), cursor);
    }

    std::list<token> tokens;
    std::list<token>::const_iterator cursor;
    std::list<token>::const_iterator end;
};

// The tokens of an element that is written without an XML declaration.
inline walk tokens_of(const std::string& element) {
    tova::parser::xml_token_stream stream;
    stream.parse("<?xml?>" + element);
    return walk(std::list<token>(stream.begin(), stream.end()));
}

}  // namespace test_support
