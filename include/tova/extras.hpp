/// @file
/// All add-ons, in one include.
///
///     #include <tova/extras.hpp>
///     using namespace tova::extras;             // for the operators, and only where you want them
///
/// Add-ons are headers over the public interface. They are compiled into the program and add
/// nothing to the library. Including them changes nothing that a program does: every name is in
/// `tova::extras`, and the operators are found only by `using`. Each header says what threads may
/// share.
#pragma once

#include <tova/extras/callables.hpp>
#include <tova/extras/checked.hpp>
#include <tova/extras/data_file.hpp>
#include <tova/extras/dates.hpp>
#include <tova/extras/errors.hpp>
#include <tova/extras/follow.hpp>
#include <tova/extras/follow_event.hpp>
#include <tova/extras/format.hpp>
#include <tova/extras/hash.hpp>
#include <tova/extras/options.hpp>
#include <tova/extras/plural.hpp>
#include <tova/extras/stream.hpp>
#include <tova/extras/variants.hpp>
#include <tova/extras/views.hpp>
