"""Reads INI files with Python's configparser: read_ini.py < FILES > READINGS.

Each line of the input is a file in hexadecimal digits; each line of the output is a JSON object:

- "refused": whether the reader refuses the file, even if it is not strict
- "strict": whether it refuses the file, or a section or key that comes twice
- "values": lists of section, key and value, without those of a refused file
- "interpolated": whether a ConfigParser, which replaces "%", reads the same values
"""
import configparser
import io
import json
import sys


def read(parser, content):
    parser.read_file(io.TextIOWrapper(io.BytesIO(content), encoding="utf-8"))
    sections = [*parser.sections(), "DEFAULT"]
    return [[section, key, value] for section in sections for key, value in parser.items(section)]


def refuses(parser, content):
    try:
        read(parser, content)
    except (configparser.Error, ValueError):
        return True
    return False


for line in sys.stdin:
    data = bytes.fromhex(line)
    result = {"refused": False, "values": [], "interpolated": True}
    try:
        result["values"] = read(configparser.RawConfigParser(strict=False), data)
    except configparser.Error:
        result["refused"] = True
    except UnicodeDecodeError:
        result = {"refused": True, "no_utf8": True, "values": []}
    result["strict"] = refuses(configparser.RawConfigParser(), data)
    if not result["refused"]:
        try:
            result["interpolated"] = result["values"] == read(configparser.ConfigParser(strict=False), data)
        except (configparser.Error, ValueError):
            result["interpolated"] = False
    print(json.dumps(result))
