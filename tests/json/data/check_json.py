#!/usr/bin/env python3
"""Strict JSON check of each file named: prints "valid" or "invalid" per line."""
import json
import sys

for name in sys.argv[1:]:
    try:
        with open(name, 'rb') as f:
            json.loads(f.read().decode('utf-8'))
        print('valid')
    except (ValueError, UnicodeDecodeError):
        print('invalid')
