/// Everything the library offers, in one include.
#pragma once

#include <tova/abi.hpp>

// Foundation

// Strings

// Values

// System

// Parsers

// Internationalisation

// Serialization

// Configuration
