/// @file
/// Everything of namespace `strings`: the three string types, the conversions between them, code
/// pages, and the algorithms on strings. Each header says what threads may do.
#pragma once

#include <tova/strings/byte_order_mark.hpp>
#include <tova/strings/case.hpp>
#include <tova/strings/code_page.hpp>
#include <tova/strings/gh2.hpp>
#include <tova/strings/length.hpp>
#include <tova/strings/prefix.hpp>
#include <tova/strings/replace.hpp>
#include <tova/strings/split.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/strings/ustring.hpp>
