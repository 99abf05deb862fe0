"""Pretty-printers for gdb: strings, variants, arguments, holders, delegates, messages, catalogs,
settings and dates, as docs/debugging.md shows them.

Installed as libtova.so.VERSION-gdb.py, which gdb loads together with the library. It can also be
loaded by hand: `source tova_printers.py`.

The printers need the debug information of the program, not of the library. Anything that the program does
not describe (the body of a variant) is read at the offsets that the binary interface fixes. They call no
function of the program, so they work on core files, and they survive variables that are not initialized
yet.
"""
import re
import struct

import gdb
import gdb.printing

NAMESPACE = "TOVA_2_18"
WORD = 8  # bytes of a pointer
UNREADABLE = "<unreadable>"

# Offsets that the binary interface fixes. An object with virtual functions begins with a pointer to
# its vtable; then come the heap mark and the count. The nodes of maps and sets are those of libstdc++.
HEAP_MARK, COUNT, BODY_VALUE = 8, 12, 16
TREE_CHILDREN, TREE_FLAGS, TREE_VALUE = 16, 64, 72
STRING_SIZE = 32
MAP_FIRST, MAP_SIZE = 24, 40
NODE_PARENT, NODE_LEFT, NODE_RIGHT, NODE_VALUE = 8, 16, 24, 32

# The largest sizes that a printer accepts. Uninitialized memory may contain any number.
MOST_UNITS = 1 << 40
MOST_ELEMENTS = 1 << 24


# --- Memory -----------------------------------------------------------------------------------------

def read(address, count):
    """Bytes of the program. Raises gdb.MemoryError."""
    if count == 0:
        return b""
    return bytes(gdb.selected_inferior().read_memory(address, count))


def read_word(address):
    return struct.unpack("<Q", read(address, WORD))[0]


def printed_elements(count):
    """How many of `count` elements gdb should show. `set print elements` limits them."""
    limit = gdb.parameter("print elements")
    return count if not limit else min(count, limit)


def vtable_class(address):
    """The class of a polymorphic object, found by the symbol of its vtable, or None."""
    symbol = gdb.execute("info symbol %d" % read_word(address), to_string=True)
    match = re.match(r"vtable for (.+?)(?: \+ \d+)?(?: in section .*)?$", symbol.strip())
    return match.group(1) if match else None


def plain(value):
    """The object itself if a reference is printed."""
    if value.type.strip_typedefs().code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        return value.referenced_value()
    return value


def readable(function):
    """Wraps a printer so that it never fails: it marks whatever cannot be read."""
    def guarded(*arguments):
        try:
            return function(*arguments)
        except (gdb.error, ValueError, OverflowError, struct.error):
            return UNREADABLE
    return guarded


# --- Strings ----------------------------------------------------------------------------------------

ESCAPES = {"\n": "\\n", "\t": "\\t", "\r": "\\r", '"': '\\"', "\\": "\\\\"}


def escaped(character, unicode_output):
    code = ord(character)
    if character in ESCAPES:
        return ESCAPES[character]
    if 0xDC80 <= code <= 0xDCFF:
        return "\\x%02x" % (code - 0xDC00)  # an invalid byte, as "surrogateescape" stores it
    if code < 0x20 or code == 0x7F:
        return "\\x%02x" % code
    if 0xD800 <= code <= 0xDFFF or (code > 0x7F and not unicode_output):
        return ("\\u%04x" if code < 0x10000 else "\\U%08x") % code
    return character


def content(address, units, width):
    """Text in memory without quotes, with "..." if gdb's limit cuts it off. The arguments are the address,
    the number of code units and the bytes of a unit."""
    if units > MOST_UNITS:
        raise ValueError("not a length")
    shown = printed_elements(units)
    data = read(address, shown * width)
    if width == 1:
        text = data.decode("utf-8", "surrogateescape")
    elif width == 2:
        text = data.decode("utf-16-le", "surrogatepass")
    else:
        codes = struct.unpack("<%dI" % shown, data)
        text = "".join(chr(code) if code < 0x110000 else "\uFFFD" for code in codes)
    # In a terminal without UTF-8, gdb cannot print such text, so use escapes there.
    unicode_output = gdb.host_charset().upper().replace("-", "") == "UTF8"
    body = "".join(escaped(character, unicode_output) for character in text)
    return body, "..." if shown < units else ""


def quoted(address, units, width):
    """Text in memory as a literal."""
    return '%s"%s"%s' % ({1: "", 2: "u", 4: "L"}[width], *content(address, units, width))


def quoted_at(address, width):
    """The string object at an address: libstdc++ stores a pointer and a length first."""
    return quoted(read_word(address), read_word(address + WORD), width)


def place(value):
    """Address and length of the units of a string object."""
    return int(value["_M_dataplus"]["_M_p"]), int(value["_M_string_length"])


def bare(value):
    """A string object without quotes."""
    return "".join(content(*place(value), 1))


def string_text(value):
    """A string object of any width as a literal."""
    return quoted(*place(value), value["_M_dataplus"]["_M_p"].dereference().type.sizeof)


# --- Values -----------------------------------------------------------------------------------------


# The stored type, as it appears in the vtable's symbol, with the name to show and the way to read the
# value.
NUMBERS = {
    "signed char": "<b", "short": "<h", "int": "<i", "long": "<q", "unsigned char": "<B",
    "unsigned short": "<H", "unsigned int": "<I", "unsigned long": "<Q",
}
REALS = ("float", "double", "long double")
STRINGS = {
    NAMESPACE + "::strings::ustring8": ("ustring8", 1),
    NAMESPACE + "::strings::ustring16": ("ustring16", 2),
    NAMESPACE + "::strings::ustring32": ("ustring32", 4),
}


def stored_value(kind, address):
    """The value of a body as text, with its type."""
    if kind == NAMESPACE + "::types::nil_t":
        return "nil"
    if kind == "bool":
        return "bool true" if read(address, 1) != b"\0" else "bool false"
    if kind in NUMBERS:
        layout = NUMBERS[kind]
        number, = struct.unpack(layout, read(address, struct.calcsize(layout)))
        character = ""
        if kind.endswith(" char") and 0x20 <= number < 0x7F:
            character = " '%s'" % chr(number)
        return "%s %d%s" % (kind, number, character)
    if kind in REALS:
        number = gdb.Value(address).cast(gdb.lookup_type(kind).pointer()).dereference()
        return "%s %s" % (kind, number.format_string())
    if kind in STRINGS:
        name, width = STRINGS[kind]
        return "%s %s" % (name, quoted_at(address, width))
    if kind.startswith("std::") and "basic_string<char" in kind:
        return "std::string " + quoted_at(address, 1)
    if kind.startswith("std::") and "basic_string<wchar_t" in kind:
        return "std::wstring " + quoted_at(address, 4)
    return kind


def body_text(body):
    """The value of the body at an address."""
    if body == 0:
        return "<destroyed>"
    name = vtable_class(body)
    if name is None:
        return UNREADABLE
    match = re.match(r"%s::types::variant_value_t<(.*?) ?>$" % NAMESPACE, name)
    return stored_value(match.group(1), body + BODY_VALUE) if match else name


def variant_text(value):
    return body_text(int(value["m_body"]["m_object"]))


def argument_text(value):
    name = value["m_name"]
    text = variant_text(value["m_value"])
    return text if int(name["_M_string_length"]) == 0 else "%s = %s" % (string_text(name), text)


def date_text(value):
    return "%04d-%02d-%02d" % tuple(int(value[field]) for field in ("m_year", "m_month", "m_day"))


def time_text(value):
    fields = ("m_hour", "m_minute", "m_second", "m_millisecond")
    return "%02d:%02d:%02d.%03d" % tuple(int(value[field]) for field in fields)


def date_time_text(value):
    return "%s %s" % (date_text(value["m_date"]), time_text(value["m_time"]))


ITEM_TYPES = ("text", "string", "number", "int", "double", "time", "date", "memory", "memory_unit",
              "metric", "metric_unit", "duration")


def item_text(value):
    """A literal item as its text, an argument item as <name: type attribute=value>."""
    kind = int(value["m_type"])
    if kind == 0:
        return string_text(value["m_data"])
    pieces = bare(value["m_data"]).split("\\x01")
    attributes = "".join(" %s=%s" % pair for pair in zip(pieces[1::2], pieces[2::2]))
    name = ITEM_TYPES[kind] if kind < len(ITEM_TYPES) else "type %d" % kind
    return "<%s: %s%s>" % (pieces[0], name, attributes)


def one_line(function):
    """A printer of values that fit on a line."""
    class Printer:
        def __init__(self, value):
            self.value = plain(value)

        @readable
        def to_string(self):
            return function(self.value)

    return Printer


# --- Containers -------------------------------------------------------------------------------------

def vector_bounds(vector):
    """Begin and length of a vector, or ValueError if it cannot be one."""
    begin, end = (vector["_M_impl"][field] for field in ("_M_start", "_M_finish"))
    count = int(end - begin)
    if not 0 <= count <= MOST_ELEMENTS:
        raise ValueError("not a vector")
    return begin, count


def vector_children(vector):
    try:
        begin, count = vector_bounds(vector)
    except (gdb.error, ValueError):
        return
    for index in range(count):
        yield "[%d]" % index, (begin + index).dereference()


def tree_size(tree):
    """The number of elements of the std::map or std::set at an address."""
    size = read_word(tree + MAP_SIZE)
    if size > MOST_ELEMENTS:
        raise ValueError("not a map")
    return size


def tree_nodes(tree):
    """The addresses of the elements, in order."""
    node = read_word(tree + MAP_FIRST)
    for _ in range(tree_size(tree)):
        yield node + NODE_VALUE
        right = read_word(node + NODE_RIGHT)
        if right:
            node = right
            while read_word(node + NODE_LEFT):
                node = read_word(node + NODE_LEFT)
        else:
            parent = read_word(node + NODE_PARENT)
            while read_word(parent + NODE_RIGHT) == node:
                node, parent = parent, read_word(parent + NODE_PARENT)
            node = parent


def map_children(tree, mapped):
    """The children of a printer with the display hint "map": alternating keys and values. `mapped` turns an
    address into a value."""
    key = gdb.lookup_type(NAMESPACE + "::strings::ustring8").pointer()
    index = 0
    try:
        for address in tree_nodes(tree):
            yield str(index), gdb.Value(address).cast(key).dereference()
            yield str(index + 1), mapped(address + STRING_SIZE)
            index += 2
    except (gdb.error, ValueError):
        return


def counted(count, noun):
    return "%d %s%s" % (count, noun, "" if count == 1 else "s")


class ListPrinter:
    """varg_list."""

    def __init__(self, value):
        self.value = plain(value)

    @readable
    def to_string(self):
        return "varg_list of %d" % vector_bounds(self.value["m_arguments"])[1]

    def children(self):
        return vector_children(self.value["m_arguments"])

    def display_hint(self):
        return "array"


class MessagePrinter:
    """message_t: key and locale, then the items."""

    def __init__(self, value):
        self.value = plain(value)

    @readable
    def to_string(self):
        vector_bounds(self.value["m_items"])
        locale = self.value["m_orginal_locale"]
        shown = " (%s)" % bare(locale) if int(locale["_M_string_length"]) else ""
        return "message %s%s" % (string_text(self.value["m_name"]), shown)

    def children(self):
        return vector_children(self.value["m_items"])

    def display_hint(self):
        return "array"


class CatalogPrinter:
    """catalog_t: name and locales, then key and message."""

    def __init__(self, value):
        self.value = plain(value)

    @readable
    def to_string(self):
        messages = counted(tree_size(int(self.value["m_messages"].address)), "message")
        # The set of locales is a cache. It is empty until the program asks for a language.
        languages = "".join(" " + "".join(content(read_word(address), read_word(address + WORD), 1))
                            for address in tree_nodes(int(self.value["m_languages"].address))
                            if read_word(address + WORD) != 0)
        return "catalog %s, %s%s" % (string_text(self.value["m_name"]), messages,
                                     ", languages:" + languages if languages else "")

    def children(self):
        message = gdb.lookup_type(NAMESPACE + "::i18n::message_t").pointer()
        return map_children(int(self.value["m_messages"].address),
                            lambda address: gdb.Value(address).cast(message).dereference())

    def display_hint(self):
        return "map"


# g++ describes a class with virtual functions only where the first of them is defined. So a program may
# know only the name of config_tree, and gdb prints such an object only if it is a variable. The trees
# inside it are then shown as text.

TREE_GIVEN, TREE_ARRAY, TREE_ALIAS = 1, 2, 4


def node_text(tree):
    """The node at an address without its children."""
    tree_size(tree + TREE_CHILDREN)
    flags, = struct.unpack("<I", read(tree + TREE_FLAGS, 4))
    text = "config_tree"
    if flags & TREE_ARRAY:
        text += " array"
    if flags & TREE_ALIAS:
        text += " alias of"
    if flags & (TREE_GIVEN | TREE_ALIAS):
        text += " " + body_text(read_word(tree + TREE_VALUE))
    return text


def tree_text(tree):
    """The whole tree at an address, as gdb shows a map."""
    nodes = list(tree_nodes(tree + TREE_CHILDREN))
    shown = ["[%s] = %s" % (quoted_at(node, 1), tree_text(read_word(node + STRING_SIZE)))
             for node in nodes[:printed_elements(len(nodes))]]
    if len(shown) < len(nodes):
        shown.append("...")
    return node_text(tree) + (" = {%s}" % ", ".join(shown) if shown else "")


def tree_object(kind, tree):
    """The tree at an address as an object of its class, or as text if the class is not described."""
    if kind.sizeof == 0:
        return readable(tree_text)(tree)
    return gdb.Value(tree).cast(kind.pointer()).dereference()


class TreePrinter:
    """config_tree: the value of the node, then its children by name."""

    def __init__(self, value):
        value = plain(value)
        self.type = value.type.unqualified()
        self.address = int(value.address)

    @readable
    def to_string(self):
        return node_text(self.address)

    def children(self):
        return map_children(self.address + TREE_CHILDREN,
                            lambda holder: tree_object(self.type, read_word(holder)))

    def display_hint(self):
        return "map"


# --- Holders and delegates --------------------------------------------------------------------------

class HolderPrinter:
    """rc_pointer and shared_pointer: the count, then the object."""

    def __init__(self, value):
        self.value = plain(value)
        self.name = re.match(r".*?(\w+)<", self.value.type.strip_typedefs().name).group(1)

    @readable
    def to_string(self):
        pointer = self.value["m_object"]
        if int(pointer) == 0:
            return self.name + " (empty)"
        try:
            mark = int(pointer["allocated"].address)
        except gdb.MemoryError:
            return UNREADABLE
        except gdb.error:  # g++ does not describe the class, so it has virtual functions
            buffer = "serialize_buffer" in str(pointer.type)  # this class has one more base
            mark = int(pointer) + HEAP_MARK + (WORD if buffer else 0)
        count, = struct.unpack("<I", read(mark + COUNT - HEAP_MARK, 4))
        kept = "" if read(mark, 1) != b"\0" else ", not on the heap"
        return "%s (count %d%s)" % (self.name, count, kept)

    def children(self):
        try:
            pointer = self.value["m_object"]
            if int(pointer) != 0:
                read(int(pointer), 1)
                if str(pointer.type.target().unqualified()).endswith("::config::config_tree"):
                    yield "object", tree_object(pointer.type.target(), int(pointer))
                else:
                    yield "object", pointer.cast(pointer.dynamic_type).dereference()
        except gdb.error:
            return


class DelegatePrinter:
    """delegate_t: the member function and its object, or the class of another callable."""

    def __init__(self, value):
        self.value = plain(value)

    @readable
    def to_string(self):
        pointer = self.value["m_function"]
        if int(pointer) == 0:
            return "delegate_t (empty)"
        name = vtable_class(int(pointer))
        if name is None:
            return UNREADABLE
        if not name.startswith(NAMESPACE + "::functor::member_function_t<"):
            return "delegate_t of " + name
        # A vtable, the object, then the member function: an address, or 1 plus an offset in the
        # vtable of the object.
        target, member = (read_word(int(pointer) + index * WORD) for index in (1, 2))
        if member & 1:
            member = read_word(read_word(target) + member - 1)
        symbol = gdb.execute("info symbol %d" % member, to_string=True)
        match = re.match(r"(.+?)(?: \+ \d+)?(?: in section .*)?$", symbol.strip())
        function = match.group(1) if match and not symbol.startswith("No symbol") else hex(member)
        return "delegate_t of %s on %s" % (function, hex(target))


# --- Registration -----------------------------------------------------------------------------------

def collection():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("tova")
    for name, printer in (
            ("strings::ustring8", one_line(string_text)),
            ("strings::ustring16", one_line(string_text)),
            ("strings::ustring32", one_line(string_text)),
            ("types::variant", one_line(variant_text)),
            ("generic::argument", one_line(argument_text)),
            ("generic::varg_list", ListPrinter),
            ("memory::pointers::rc_pointer<.*>", HolderPrinter),
            ("memory::pointers::shared_pointer<.*>", HolderPrinter),
            ("functor::delegate_t<.*>", DelegatePrinter),
            ("i18n::message_item", one_line(item_text)),
            ("i18n::message_t", MessagePrinter),
            ("i18n::catalog_t", CatalogPrinter),
            ("config::config_tree", TreePrinter),
            ("system::date_time::date", one_line(date_text)),
            ("system::date_time::time", one_line(time_text)),
            ("system::date_time::date_time_t", one_line(date_time_text))):
        printers.add_printer(name.split("<")[0].split("::")[-1], "^%s::%s$" % (NAMESPACE, name),
                             printer)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), collection(), replace=True)
