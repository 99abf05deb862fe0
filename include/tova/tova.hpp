/// @file
/// Everything the library offers, in one include.
///
///     #include <tova/tova.hpp>
///
///     tova::generic::varg_list arguments;
///     arguments.push_back("user", "Maria");
///
/// A program that uses one family can include that family's headers instead: each compiles alone.
/// Two threads may work on different objects at the same time; where a class shares more than its
/// objects show, its header says so.
#pragma once

#include <tova/abi.hpp>

// Foundation
#include <tova/debug/assert.hpp>
#include <tova/exceptions/exceptions.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/functor/function_type_interface.hpp>
#include <tova/functor/member_function.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/generic/clone_interface.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/traits/function_traits.hpp>
#include <tova/types/nil.hpp>

// Strings
#include <tova/strings/byte_order_mark.hpp>
#include <tova/strings/case.hpp>
#include <tova/strings/code_page.hpp>
#include <tova/strings/gh2.hpp>
#include <tova/strings/length.hpp>
#include <tova/strings/prefix.hpp>
#include <tova/strings/replace.hpp>
#include <tova/strings/split.hpp>
#include <tova/strings/strings.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/strings/ustring.hpp>

// Values
#include <tova/generic/argument.hpp>
#include <tova/generic/convert/binary.hpp>
#include <tova/generic/convert/str_to_x.hpp>
#include <tova/generic/convert/units.hpp>
#include <tova/generic/convert/x_to_str.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/types/absolute_unit.hpp>
#include <tova/types/color.hpp>
#include <tova/types/device_unit.hpp>
#include <tova/types/radix.hpp>
#include <tova/types/variant.hpp>
#include <tova/types/variant_type.hpp>
#include <tova/types/variant_value.hpp>

// System
#include <tova/system/date_time/date.hpp>
#include <tova/system/date_time/date_time.hpp>
#include <tova/system/date_time/duration.hpp>
#include <tova/system/date_time/time.hpp>
#include <tova/system/date_time/timer.hpp>
#include <tova/system/directories.hpp>
#include <tova/system/files.hpp>
#include <tova/system/io.hpp>

// Parsers
#include <tova/parser/xml_parser.hpp>
#include <tova/parser/xml_stream_parser.hpp>
#include <tova/parser/xml_token_stream.hpp>

// Internationalisation
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/i18n/catalog.hpp>
#include <tova/i18n/format.hpp>
#include <tova/i18n/message.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/i18n/message_item.hpp>

// Serialization
#include <tova/serialization/labeled_serialize_buffer.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_buffer.hpp>
#include <tova/serialization/serialize_text_buf.hpp>

// Configuration
#include <tova/config/base_config_item.hpp>
#include <tova/config/characters.hpp>
#include <tova/config/commandline_item.hpp>
#include <tova/config/config.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/config/config_manager.hpp>
#include <tova/config/config_token.hpp>
#include <tova/config/config_tree.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/module_config_dispatch.hpp>
#include <tova/config/std_config_dispatch.hpp>
#include <tova/config/user_item.hpp>
