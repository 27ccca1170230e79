#!/usr/bin/env python3
"""The independent half of the real-world round trips: ORIGINAL and WRITTEN
(XML files) hold the same information under SCHEMA, and JSON is valid RFC
8259 text.

Elements compare by namespace and local name, in order, or, failing that, in
any order (the children of xs:all are written in the schema's order);
attributes by name and value, leaving out xsi:schemaLocation and its kin,
which a binding does not keep. Texts compare with their whitespace collapsed,
or as numbers where both are numbers (a decimal or float is written in its
canonical form); an empty element equals one holding the default that the
schema gives an element of that name, and text that is only whitespace
between child elements does not count. Prints "same" or the first difference
with its path."""
import json
import sys
import xml.etree.ElementTree as ET

XSI = '{http://www.w3.org/2001/XMLSchema-instance}'
XS = '{http://www.w3.org/2001/XMLSchema}'
DEFAULTS = {}


def same_value(a, b, name=None):
    a, b = ' '.join(a.split()), ' '.join(b.split())
    if a == b:
        return True
    defaults = DEFAULTS.get(name, ())
    if (a == '' and b in defaults) or (b == '' and a in defaults):
        return True
    try:
        return float(a) == float(b)
    except ValueError:
        return False


def compare(x, y, path):
    path = path + '/' + x.tag
    if x.tag != y.tag:
        return path + ': element ' + y.tag + ' written for ' + x.tag
    ax = {k: v for k, v in x.attrib.items() if not k.startswith(XSI)}
    ay = {k: v for k, v in y.attrib.items() if not k.startswith(XSI)}
    if ax.keys() != ay.keys():
        return path + ': attributes ' + str(sorted(ay)) + ' written for ' + str(sorted(ax))
    for k in ax:
        if not same_value(ax[k], ay[k]):
            return path + '/@' + k + ': [' + ay[k] + '] written for [' + ax[k] + ']'
    tx, ty = x.text or '', y.text or ''
    if len(x) and not tx.strip():
        tx = ''
    if len(y) and not ty.strip():
        ty = ''
    if not same_value(tx, ty, x.tag.split('}')[-1]):
        return path + ': text [' + ty[:60] + '] written for [' + tx[:60] + ']'
    if len(x) != len(y):
        return path + ': ' + str(len(y)) + ' children written for ' + str(len(x))
    for cx, cy in zip(x, y):
        difference = compare(cx, cy, path)
        if difference:
            return None if unordered(x, y, path) else difference
    return None


def unordered(x, y, path):
    left = list(y)
    for cx in x:
        match = next((cy for cy in left if compare(cx, cy, path) is None), None)
        if match is None:
            return False
        left.remove(match)
    return True


def refuse_duplicates(pairs):
    keys = [k for k, _ in pairs]
    if len(keys) != len(set(keys)):
        raise ValueError('duplicate key')
    return dict(pairs)


def refuse_constant(name):
    raise ValueError('non-standard constant ' + name)


schema, original, written, json_file = sys.argv[1:5]
for declaration in ET.parse(schema).getroot().iter(XS + 'element'):
    if 'default' in declaration.attrib:
        DEFAULTS.setdefault(declaration.attrib.get('name'), set()).add(declaration.attrib['default'])
try:
    with open(json_file, 'rb') as f:
        json.loads(f.read().decode('utf-8'), object_pairs_hook=refuse_duplicates, parse_constant=refuse_constant)
except (ValueError, UnicodeDecodeError) as e:
    print('invalid JSON: ' + str(e).splitlines()[0])
    sys.exit(0)
print(compare(ET.parse(original).getroot(), ET.parse(written).getroot(), '') or 'same')
