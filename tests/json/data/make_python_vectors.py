#!/usr/bin/env python3
"""Writes python-vectors.txt: JSON texts made by json.dumps, each with the
event trace that the reader must give for it (see JsonTextReaderTest.cpp).

Strings avoid the characters json.dumps writes as \\uXXXX (other control
characters), since the reader does not decode those escapes."""
import json
import random

CHARS = list('abcXYZ09 _-:@#') + ['"', '\\', '/', '\b', '\f', '\n', '\r', '\t', '\u00e9', '\u20ac', '\U0001F600']


def text(rng):
    return ''.join(rng.choice(CHARS) for _ in range(rng.randint(0, 8)))


def value(rng, depth):
    kind = rng.randint(0, 9 if depth < 8 else 5)
    if kind == 0:
        return None
    if kind == 1:
        return rng.choice([True, False])
    if kind == 2:
        return rng.randint(-10**20, 10**20)
    if kind == 3:
        return rng.choice([0.5, -1.25e-7, 1e300, 123456.789, -0.0, 2.5e16, rng.uniform(-1e6, 1e6)])
    if kind <= 5:
        return text(rng)
    if kind <= 7:
        return [value(rng, depth + 1) for _ in range(rng.randint(0, 4))]
    return {text(rng): value(rng, depth + 1) for _ in range(rng.randint(0, 4))}


def trace(v, out):
    if v is None:
        out.append('null')
    elif v is True:
        out.append('true')
    elif v is False:
        out.append('false')
    elif isinstance(v, (int, float)):
        out.append('n:' + json.dumps(v))
    elif isinstance(v, str):
        out.append('s:' + v)
    elif isinstance(v, list):
        out.append('[')
        for item in v:
            trace(item, out)
        out.append(']')
    else:
        out.append('{')
        for k, item in v.items():
            out.append('k:' + k)
            trace(item, out)
        out.append('}')


def main():
    rng = random.Random(20240611)
    with open('python-vectors.txt', 'wb') as f:
        for i in range(300):
            v = value(rng, 0)
            indent = [None, 2, '\t', 0][i % 4]
            separators = (',', ':') if i % 5 == 0 and indent is None else None
            doc = json.dumps(v, ensure_ascii=False, indent=indent, separators=separators).encode('utf-8')
            events = ['<']
            trace(v, events)
            events.append('>')
            expected = ' '.join(events).encode('utf-8')
            f.write(b'json %d\n%s\ntrace %d\n%s\n' % (len(doc), doc, len(expected), expected))


main()
