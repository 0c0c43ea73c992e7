"""What a shared library exports and what it asks of others, read from its dynamic symbol table."""

import re
import subprocess

_LINE = re.compile(r"^[0-9a-f]* +[A-Za-z] (?P<name>.*?)(?:@.*)?$")

# How the compiler spells our types, and how the headers do, inner types first. The standard's inline
# namespace for C++11 stands nowhere in a header.
_SPELLINGS = [(re.compile(pattern), text) for pattern, text in (
    (r" (?=>)", ""),
    (r"std::__cxx11::", "std::"),
    (r"\[abi:cxx11\]", ""),
    (r"std::basic_string<wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t>>", "std::wstring"),
    (r"std::basic_string<char, std::char_traits<char>, std::allocator<char>>", "std::string"),
    (r"std::basic_regex<char, std::regex_traits<char>>", "std::regex"),
    (r"(jsonlib::json::Value)_impl<jsonlib::json::Config_map<std::wstring>>", r"\1"),
    (r"std::map<std::wstring, (jsonlib::json::)Value, std::less<std::wstring>, "
     r"std::allocator<std::pair<std::wstring const, jsonlib::json::Value>>>", r"\1Object"),
    (r"std::vector<(jsonlib::json::)Value, std::allocator<jsonlib::json::Value>>", r"\1Array"),
    (r"std::set<std::reference_wrapper<common::ConfigListener>, common::ListenerOrder, "
     r"std::allocator<std::reference_wrapper<common::ConfigListener>>>", "common::ConfigListeners"),
    (r"std::vector<([\w:]+), std::allocator<\1>>", r"std::vector<\1>"),
    (r"std::unique_ptr<([\w:]+), std::default_delete<\1>>", r"std::unique_ptr<\1>"),
)]


def readable(name):
    """`name` as a header would write it."""
    for pattern, text in _SPELLINGS:
        name = pattern.sub(text, name)
    return name


def names(table):
    """The names in what nm printed, without versions, sorted and each once: a constructor has two entries."""
    matches = map(_LINE.match, table.splitlines())
    return sorted({readable(match["name"]) for match in matches if match})


def of_library(library, which):
    """The library's names; `which` is nm's option --defined-only or --undefined-only."""
    table = subprocess.run(["nm", "--dynamic", "--demangle", which, library],
                           check=True, capture_output=True, text=True).stdout
    return names(table)
