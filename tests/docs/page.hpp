// The output of extract_page.py for a guide: its code blocks as functions, and its files.
#pragma once

#include <tova/tova.hpp>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <limits>
#include <list>
#include <locale>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <typeinfo>
#include <unistd.h>
#include <utility>
#include <vector>

namespace docs_test {

struct snippet {
    int line;  // line of the code in the page, counted from 1
    void (*run)();
    const char* output;  // its output to standard output and standard error
    bool is_hazard;      // it must end by a signal, a limit or an exception
};

struct file {
    const char* name;
    const char* text;
};

extern const char* const page_name;
extern const std::vector<snippet> snippets;
extern const std::vector<file> files;

}  // namespace docs_test
