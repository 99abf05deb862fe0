// A second, simple reader of command lines and environments. It uses the tokens and nodes of the
// one for files.
#pragma once

#include "cfg_oracle.hpp"

#include <set>
#include <string>
#include <vector>

namespace line_oracle {

using cfg_oracle::kind;
using cfg_oracle::nodes;
using cfg_oracle::piece;

inline bool is_sign(const piece& part, const std::string& sign) {
    return !part.quoted && part.text == sign;
}

// A line `KEY=value`, the form of environment strings and flags.
inline void read_line(nodes& tree, const std::string& line) {
    std::string texts[2];
    int side = 0;
    for (const piece& part : cfg_oracle::cut(line)) {
        if (side == 0 && part.what == kind::equals)
            side = 1;
        else if (side == 1 && part.what == kind::line_end)
            break;
        else if (!cfg_oracle::vanishes(part.what))
            texts[side] += part.text;
    }
    cfg_oracle::store(tree, texts[0], texts[1]);
}

// The tokens of an argument. A run of spaces repeats the text of the previous token.
inline std::vector<piece> pieces_of(const std::string& argument, std::string& last) {
    std::vector<piece> pieces = cfg_oracle::cut(argument);
    for (piece& part : pieces) {
        if (part.what == kind::space && part.text != "\t") {
            part.text = last;
            part.quoted = true;  // not a separator, whatever its text
        } else if (part.what == kind::line_end) {
            part.text = "\n";
        }
        last = part.text;
    }
    return pieces;
}

inline std::string join(const std::vector<piece>& pieces, std::size_t from) {
    std::string text;
    for (; from < pieces.size(); ++from)
        text += pieces[from].text;
    return text;
}

inline void store(nodes& tree, const std::string& key, const std::vector<std::string>& values) {
    if (values.size() == 1)
        cfg_oracle::store(tree, key, values[0]);
    else
        cfg_oracle::store_array(tree, key, values);
}

// Reads all arguments except the first. Returns those that are ignored.
inline std::vector<std::string> read_options(nodes& tree, const std::vector<std::string>& all) {
    const std::set<std::string> separators = {"=", ":", ":=", ">=", "<=", "+=", "-=", "*=", "/="};
    const auto begins_with = [&](std::size_t i, const std::string& any) {
        return i < all.size() && !all[i].empty() && any.find(all[i][0]) != std::string::npos;
    };
    std::vector<std::string> ignored;
    std::string last;
    for (std::size_t i = 1; i < all.size(); ++i) {
        if (!begins_with(i, "-/")) {
            ignored.push_back(all[i]);
            continue;
        }
        const std::vector<piece> pieces = pieces_of(all[i].substr(1), last);
        std::string key;
        std::size_t at = 0;
        while (at < pieces.size() && !is_sign(pieces[at], "$") &&
               (pieces[at].quoted || separators.count(pieces[at].text) == 0))
            key += pieces[at++].text;
        if (at < pieces.size() && pieces[at].text == "$") {
            store(tree, key, {join(pieces, at + 1)});
        } else if (at < pieces.size()) {
            const std::string& sign = pieces[at].text;
            if (sign.size() == 2 && sign != ":=")
                key += sign[0];
            std::vector<std::string> values(1);
            for (++at; at < pieces.size(); ++at) {
                if (is_sign(pieces[at], ","))
                    values.emplace_back();
                else
                    values.back() += pieces[at].text;
            }
            store(tree, key, values);
        } else if (i + 1 == all.size() || begins_with(i + 1, "-/")) {
            read_line(tree, key);
        } else {
            std::vector<std::string> values;
            do
                values.push_back(join(pieces_of(all[++i], last), 0));
            while (i + 1 < all.size() && !begins_with(i + 1, "-"));
            store(tree, key, values);
        }
    }
    return ignored;
}

}  // namespace line_oracle
