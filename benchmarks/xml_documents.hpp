/// @file
/// Generated XML documents for the benchmarks of both parsers, and the check that every library has
/// looked at all of them.
///
/// A document is a root element with one kind of piece, repeated until the document has its size:
///
///     bench_support::generated_document made =
///         bench_support::generate_document(1 << 20, bench_support::small_elements);
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench_support {

/// A kind of piece: how many elements it has, and its text for a running number.
struct document_piece {
    std::size_t elements;
    std::string (*text)(const std::string& number);
};

inline std::string small_element(const std::string& number) {
    return "  <item><id>" + number + "</id><on/><name>n" + number + "</name></item>\n";
}

const document_piece small_elements = {4, small_element};

struct generated_document {
    std::string text;
    std::size_t elements;
};

/// The pieces are at least `size` bytes in all; the declaration and the root element are extra.
inline generated_document generate_document(std::size_t size, const document_piece& piece) {
    generated_document made = {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n", 1};
    const std::size_t head = made.text.size();
    for (std::size_t i = 0; made.text.size() - head < size; ++i) {
        made.text += piece.text(std::to_string(i));
        made.elements += piece.elements;
    }
    made.text += "</root>\n";
    return made;
}

/// What a library has reported. Every library counts the elements and the bytes of values and text
/// that it was handed, so that none can skip them.
struct counts {
    std::size_t elements = 0;
    std::size_t bytes = 0;
};

/// Ends a benchmark: checks the number of elements and sets the bytes per second.
inline void finish(benchmark::State& state, std::size_t elements, std::size_t size,
                   const counts& reported) {
    if (reported.elements != elements * static_cast<std::size_t>(state.iterations()))
        state.SkipWithError("wrong number of elements");
    auto bytes = reported.bytes;
    benchmark::DoNotOptimize(bytes);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

}  // namespace bench_support
