#!/usr/bin/env python3
"""Fails when a file under src/ includes a header from a layer above its own.

The layers, from the bottom: a file may include from its own folder and from
any folder of a lower layer. The few upward includes that the object model
needs stand in EXCEPTIONS, each with its reason; anything else is a slip.

    python3 scripts/check-layers.py [src]
"""
import fnmatch
import os
import re
import sys

LAYERS = [
    ["runtime"],               # lifetime, exceptions, encodings, streams; platform/ talks to the OS
    ["values"],                # the variant, conversions, facets, value classes
    ["document"],              # the tree and the XML writers: no format, no binding
    ["json", "fastinfoset"],   # the formats' readers and writers, on the tree and the writer interface
    ["metadata"],              # the rows of generated classes
    ["collections"],           # collections and untyped nodes
    ["binding"],               # object base, context, driver, and the frames that know every format
]

# (including file, included header, why)
EXCEPTIONS = [
    ("runtime/*", "values/BinaryData.h", "streams and compression hand out binary data"),
    ("values/Variant.cpp", "binding/XmlObjectBase.h", "the cell holds counted objects"),
    ("values/Variant.cpp", "collections/XmlCollectionBase.h", "the cell holds collections"),
    ("json/JsonHandlers.h", "binding/SerializationContext.h", "JSON input is read under a context"),
    ("metadata/*", "binding/XmlObjectBase.h", "rows read and write objects"),
    ("metadata/*", "binding/XmlGeneratedClass.h", "rows call the generated class's property function"),
    ("metadata/*", "binding/SerializationContext.h", "rows take the options of the call"),
    ("metadata/*.cpp", "collections/*", "rows read and write collections and untyped nodes"),
    ("collections/*", "binding/XmlObjectBase.h", "collections and untyped nodes are objects"),
]

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def layer_of(folder):
    for index, folders in enumerate(LAYERS):
        if folder in folders:
            return index
    return None


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "src")
    slips = []
    for directory, _, files in os.walk(root):
        for name in sorted(files):
            if not name.endswith((".h", ".cpp")):
                continue
            path = os.path.relpath(os.path.join(directory, name), root).replace(os.sep, "/")
            own = layer_of(path.split("/")[0])
            if own is None:
                continue
            with open(os.path.join(directory, name), encoding="utf-8") as source:
                for number, line in enumerate(source, 1):
                    match = INCLUDE.match(line)
                    if not match or "/" not in match.group(1):
                        continue
                    header = match.group(1)
                    theirs = layer_of(header.split("/")[0])
                    if theirs is None or theirs < own or header.split("/")[0] == path.split("/")[0]:
                        continue
                    if theirs == own:  # a sibling folder of the same layer
                        slips.append(f"{path}:{number}: includes {header} from a sibling layer")
                        continue
                    if any(fnmatch.fnmatch(path, f) and fnmatch.fnmatch(header, h) for f, h, _ in EXCEPTIONS):
                        continue
                    slips.append(f"{path}:{number}: includes {header} from a layer above")
    for slip in slips:
        print(slip)
    print(f"include layers: {len(slips)} slips")
    return 1 if slips else 0


if __name__ == "__main__":
    sys.exit(main())
