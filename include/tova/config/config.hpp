/// @file
/// All of the configuration family: settings by dotted keys, from the command line, a file and the
/// environment.
///
/// `config_manager.hpp` has the example that most readers want. Nothing in the family is locked: a
/// manager, a source or a tree belongs to one thread at a time.
#pragma once

#include <tova/config/base_config_item.hpp>
#include <tova/config/characters.hpp>
#include <tova/config/commandline_item.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/config/config_manager.hpp>
#include <tova/config/config_token.hpp>
#include <tova/config/config_tree.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/module_config_dispatch.hpp>
#include <tova/config/std_config_dispatch.hpp>
#include <tova/config/user_item.hpp>
