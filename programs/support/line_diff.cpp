#include "support/line_diff.hpp"

#include <algorithm>
#include <vector>

// Myers' greedy algorithm: the shortest script is found by following, for each number of changes,
// the furthest place on each diagonal. Equal lines at both ends are set aside first.

namespace tova_programs {

namespace {

using lines = std::vector<std::string_view>;

lines split(std::string_view text) {
    lines result;
    while (!text.empty()) {
        const auto feed = text.find('\n');
        const std::size_t size = feed == text.npos ? text.size() : feed + 1;
        result.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return result;
}

struct step {
    char kind;  // ' ', '-' or '+'
    std::string_view line;
};

// The shortest script in steps from back to front.
std::vector<step> shortest_script(const lines& a, const lines& b) {
    const auto m = static_cast<std::ptrdiff_t>(a.size());
    const auto n = static_cast<std::ptrdiff_t>(b.size());
    const std::ptrdiff_t middle = m + n + 1;
    std::vector<std::ptrdiff_t> furthest(static_cast<std::size_t>(2 * middle + 1), 0);
    const auto at = [&](std::ptrdiff_t k) -> std::ptrdiff_t& {
        return furthest[static_cast<std::size_t>(middle + k)];
    };
    std::vector<std::vector<std::ptrdiff_t>> trace;
    std::ptrdiff_t changes = 0;
    for (bool is_done = false; !is_done; ++changes) {
        trace.emplace_back(furthest.begin() + (middle - changes),
                           furthest.begin() + (middle + changes + 1));
        for (std::ptrdiff_t k = -changes; k <= changes && !is_done; k += 2) {
            const bool is_down = k == -changes || (k != changes && at(k - 1) < at(k + 1));
            std::ptrdiff_t x = is_down ? at(k + 1) : at(k - 1) + 1;
            while (x < m && x - k < n &&
                   a[static_cast<std::size_t>(x)] == b[static_cast<std::size_t>(x - k)])
                ++x;
            at(k) = x;
            is_done = x >= m && x - k >= n;
        }
    }

    std::vector<step> script;
    std::ptrdiff_t x = m;
    std::ptrdiff_t y = n;
    for (std::ptrdiff_t d = changes - 1; d > 0; --d) {
        const std::vector<std::ptrdiff_t>& known = trace[static_cast<std::size_t>(d)];
        const auto before = [&](std::ptrdiff_t k) {
            return known[static_cast<std::size_t>(d + k)];
        };
        const std::ptrdiff_t k = x - y;
        const bool is_down = k == -d || (k != d && before(k - 1) < before(k + 1));
        const std::ptrdiff_t from_k = is_down ? k + 1 : k - 1;
        const std::ptrdiff_t from_x = before(from_k);
        const std::ptrdiff_t from_y = from_x - from_k;
        while (x > from_x && y > from_y) {
            script.push_back({' ', a[static_cast<std::size_t>(--x)]});
            --y;
        }
        if (is_down)
            script.push_back({'+', b[static_cast<std::size_t>(--y)]});
        else
            script.push_back({'-', a[static_cast<std::size_t>(--x)]});
    }
    while (x > 0)
        script.push_back({' ', a[static_cast<std::size_t>(--x)]});
    return script;
}

std::vector<step> script_of(const lines& a, const lines& b) {
    const std::size_t shorter = std::min(a.size(), b.size());
    std::size_t head = 0;
    while (head < shorter && a[head] == b[head])
        ++head;
    std::size_t tail = 0;
    while (tail < shorter - head && a[a.size() - 1 - tail] == b[b.size() - 1 - tail])
        ++tail;
    const auto part = [&](const lines& all) {
        return lines(all.begin() + static_cast<std::ptrdiff_t>(head),
                     all.end() - static_cast<std::ptrdiff_t>(tail));
    };
    std::vector<step> script;
    for (std::size_t i = 0; i < head; ++i)
        script.push_back({' ', a[i]});
    const std::vector<step> changed = shortest_script(part(a), part(b));
    script.insert(script.end(), changed.rbegin(), changed.rend());
    for (std::size_t i = a.size() - tail; i < a.size(); ++i)
        script.push_back({' ', a[i]});
    return script;
}

void write_step(std::ostream& out, const step& one, const style& colors) {
    std::string_view line = one.line;
    const bool is_complete = !line.empty() && line.back() == '\n';
    if (is_complete)
        line.remove_suffix(1);
    const std::string text = one.kind + std::string(line);
    out << (one.kind == '+'   ? colors.green(text)
            : one.kind == '-' ? colors.red(text)
                              : text)
        << '\n';
    if (!is_complete)
        out << "\\ No newline at end of file\n";
}

// The form of the range in a hunk's head: the first line, and the count unless it is 1.
std::string range_of(std::size_t before, std::size_t count) {
    const std::string first = std::to_string(count == 0 ? before : before + 1);
    return count == 1 ? first : first + ',' + std::to_string(count);
}

}  // namespace

bool write_line_diff(std::ostream& out, std::string_view before, std::string_view after,
                     const std::string& name_before, const std::string& name_after,
                     const style& colors, std::size_t context) {
    if (before == after)
        return false;
    const std::vector<step> script = script_of(split(before), split(after));
    out << colors.bold("--- " + name_before) << '\n' << colors.bold("+++ " + name_after) << '\n';
    std::size_t line_before = 0;
    std::size_t line_after = 0;
    const auto pass = [&](std::size_t from, std::size_t to) {
        for (; from != to; ++from) {
            line_before += script[from].kind != '+';
            line_after += script[from].kind != '-';
        }
    };
    std::size_t passed = 0;
    for (std::size_t i = 0; i < script.size();) {
        if (script[i].kind == ' ') {
            ++i;
            continue;
        }
        // A hunk ends where more than twice the context is unchanged.
        std::size_t last = i;
        for (std::size_t j = i; j < script.size() && j <= last + 2 * context + 1; ++j)
            if (script[j].kind != ' ')
                last = j;
        const std::size_t begin = std::max(passed, i < context ? 0 : i - context);
        const std::size_t end = std::min(script.size(), last + context + 1);
        pass(passed, begin);
        const std::size_t from_before = line_before;
        const std::size_t from_after = line_after;
        pass(begin, end);
        out << colors.cyan("@@ -" + range_of(from_before, line_before - from_before) + " +" +
                           range_of(from_after, line_after - from_after) + " @@")
            << '\n';
        for (std::size_t j = begin; j < end; ++j)
            write_step(out, script[j], colors);
        passed = end;
        i = end;
    }
    return true;
}

}  // namespace tova_programs
