#!/usr/bin/env python3
"""RFC 8259 check of each file named, stricter than json.loads alone: duplicate
keys and the non-standard constants NaN and Infinity are refused. Prints
"valid" or "invalid: <reason>" per file."""
import json
import sys


def refuse_duplicates(pairs):
    keys = [k for k, _ in pairs]
    if len(keys) != len(set(keys)):
        raise ValueError('duplicate key')
    return dict(pairs)


def refuse_constant(name):
    raise ValueError('non-standard constant ' + name)


for name in sys.argv[1:]:
    try:
        with open(name, 'rb') as f:
            json.loads(f.read().decode('utf-8'), object_pairs_hook=refuse_duplicates,
                       parse_constant=refuse_constant)
        print('valid')
    except (ValueError, UnicodeDecodeError) as e:
        print('invalid: ' + str(e).splitlines()[0])
