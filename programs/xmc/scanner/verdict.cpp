#include "xmc/scanner/verdict.hpp"

#include <utility>

// The order of the tests is the loader's, even where it looks odd, because only the first error is
// reported.

namespace tova_programs::xmc {

namespace {

class walk {
public:
    walk(const scan& tokens, const wanted_catalog& is_wanted)
        : m_at(tokens.tokens().begin()), m_end(tokens.tokens().end()), m_is_wanted(is_wanted) {}

    verdict run() {
        try {
            read_root();
        } catch (const stop&) {
        }
        return std::move(m_result);
    }

private:
    struct stop {};

    [[noreturn]] void fail(load_kind kind, std::string_view subject) {
        m_result.kind = kind;
        m_result.subject = subject;
        if (!at_end())
            m_result.bytes = m_at->bytes;
        throw stop();
    }

    bool at_end() const { return m_at == m_end; }
    void require_token() {
        if (at_end())
            fail(load_kind::unexpected, {});
    }
    void step() {
        ++m_at;
        require_token();
    }
    bool is_at(token_kind kind, std::string_view value) const {
        return !at_end() && m_at->kind == kind && m_at->value == value;
    }
    bool is_at_argument() const {
        return is_at(token_kind::element_start, "argument") ||
               is_at(token_kind::element_start, "arg");
    }
    void skip_ignorable() {
        while (!at_end() && (m_at->kind == token_kind::comment || m_at->kind == token_kind::space ||
                             m_at->kind == token_kind::character))
            ++m_at;
    }

    // Calls `take(name, value)` for attributes and `other(value)` for a comment before the end.
    template <typename Take, typename Other>
    void read_tag(Take take, Other other) {
        step();
        while (m_at->kind != token_kind::start_tag_end) {
            const std::string_view name = m_at->value;
            if (m_at->kind == token_kind::attribute_name) {
                step();
                take(name, m_at->value);
            } else {
                other(name);
            }
            step();
        }
        ++m_at;
    }

    void read_root() {
        if (at_end())
            fail(load_kind::unexpected, "Nothing of interest in the file.");
        skip_ignorable();
        read_header();
        skip_ignorable();
        bool is_anything_read = false;
        for (;; is_anything_read = true) {
            if (is_at(token_kind::element_start, "catalog"))
                read_catalog();
            else if (is_at(token_kind::element_start, "include"))
                read_include();
            else
                break;
            skip_ignorable();
        }
        if (!at_end() && !is_at(token_kind::element_end, "xmc"))
            fail(load_kind::invalid_element, m_at->value);
        if (!is_anything_read)
            fail(load_kind::no_catalog, {});
    }

    void read_header() {
        if (at_end())
            fail(load_kind::not_xmc, "Value Not Defined");
        if (!is_at(token_kind::element_start, "xmc"))
            fail(load_kind::not_xmc, m_at->value);
        step();
        if (!is_at(token_kind::attribute_name, "version"))
            fail(load_kind::invalid_attribute, m_at->value);
        step();
        if (m_at->value != "1.0" && m_at->value != "1.1")
            fail(load_kind::bad_version, m_at->value);
        ++m_at;
        if (!at_end())
            ++m_at;
    }

    void read_catalog() {
        std::string_view name;
        std::string_view locale;
        const auto refuse = [this](std::string_view value) {
            fail(load_kind::invalid_attribute, value);
        };
        read_tag(
            [&](std::string_view attribute, std::string_view value) {
                if (attribute == "name")
                    name = value;
                else if (attribute == "lang")
                    locale = value;
                else
                    refuse(attribute);
            },
            refuse);
        if (m_is_wanted(name, locale)) {
            skip_ignorable();
            while (is_at(token_kind::element_start, "msg")) {
                read_message();
                skip_ignorable();
            }
            require_token();
        } else {
            while (!at_end() && !is_at(token_kind::element_end, "catalog"))
                ++m_at;
        }
        if (!is_at(token_kind::element_end, "catalog"))
            fail(load_kind::catalog_not_closed, name);
        ++m_at;
    }

    void read_include() {
        read_tag(
            [this](std::string_view attribute, std::string_view value) {
                if (attribute != "file")
                    return;
                if (value.empty())
                    fail(load_kind::file_not_found, {});
                m_result.includes.emplace_back(value);
            },
            [](std::string_view) {});
        if (!is_at(token_kind::element_end, "include"))
            fail(load_kind::include_not_closed, {});
        ++m_at;
    }

    void read_message() {
        const auto refuse = [this](std::string_view value) {
            fail(load_kind::invalid_attribute, value);
        };
        read_tag(
            [&](std::string_view attribute, std::string_view) {
                if (attribute != "name" && attribute != "meta")
                    refuse(attribute);
            },
            refuse);
        require_token();
        // Any token whose value is "msg" ends the message.
        while (m_at->kind != token_kind::element_end && m_at->value != "msg") {
            if (is_at_argument()) {
                read_argument();
                continue;
            }
            if (m_at->kind == token_kind::element_start)
                read_line_break();
            step();
        }
        ++m_at;
    }

    void read_line_break() {
        if (m_at->value != "br")
            fail(load_kind::invalid_element, m_at->value);
        step();
        if (m_at->kind != token_kind::start_tag_end)
            fail(load_kind::invalid_attribute, m_at->value);
        step();
        if (!is_at(token_kind::element_end, "br"))
            fail(load_kind::br_not_closed, {});
    }

    void read_argument() {
        std::string_view name;
        read_tag(
            [&](std::string_view attribute, std::string_view value) {
                if (attribute == "name")
                    name = value;
            },
            [](std::string_view) {});
        while (!at_end() && m_at->kind != token_kind::element_end)
            ++m_at;
        if (at_end())
            fail(load_kind::arg_not_closed, name);
        step();
    }

    std::vector<token>::const_iterator m_at;
    const std::vector<token>::const_iterator m_end;
    const wanted_catalog& m_is_wanted;
    verdict m_result;
};

}  // namespace

verdict verdict_of(const scan& tokens, const wanted_catalog& is_wanted) {
    if (tokens.error().kind != xml_error::none) {
        verdict result;
        result.kind = load_kind::xml_error;
        result.subject = tokens.error().subject;
        result.bytes = tokens.error().bytes;
        return result;
    }
    return walk(tokens, is_wanted).run();
}

}  // namespace tova_programs::xmc
