#!/usr/bin/env python3
"""The walk in README.md quotes examples/: the lines between the demo's
`// [walk]` and `// [/walk]` markers must stand, dedented and in the same
order, in the README's ```cpp block that follows "<!-- walk -->", and the
```cmake block that follows "<!-- walk-cmake -->" must be lines of
examples/CMakeLists.txt, in order. Exit status 1, with the first line that
differs, when they drift apart."""
import sys
import textwrap

readme_path, demo_path = sys.argv[1], sys.argv[2]
demo = open(demo_path, encoding="utf-8").read()
start = demo.index("// [walk]")
start = demo.index("\n", start) + 1
end = demo.rindex("\n", 0, demo.index("// [/walk]")) + 1
quoted = textwrap.dedent(demo[start:end]).splitlines()

readme = open(readme_path, encoding="utf-8").read()
if "<!-- walk -->" not in readme:
    sys.exit("README.md has no <!-- walk --> marker")
block = readme[readme.index("<!-- walk -->"):]
block = block[block.index("```cpp\n") + len("```cpp\n"):]
block = block[:block.index("```")].splitlines()
if block != quoted:
    for i, (a, b) in enumerate(zip(block + [""] * len(quoted), quoted + [""] * len(block))):
        if a != b:
            sys.exit(f"README walk line {i + 1} differs from examples/demo.cpp:\n  README: {a}\n  demo:   {b}")
cmake = open(demo_path.rsplit("/", 1)[0] + "/CMakeLists.txt", encoding="utf-8").read().splitlines()
if "<!-- walk-cmake -->" not in readme:
    sys.exit("README.md has no <!-- walk-cmake --> marker")
block = readme[readme.index("<!-- walk-cmake -->"):]
block = block[block.index("```cmake\n") + len("```cmake\n"):]
block = block[:block.index("```")].splitlines()
at = 0
for line in block:
    if line not in cmake[at:]:
        sys.exit(f"README walk: [{line}] is not a line of examples/CMakeLists.txt (in order)")
    at = cmake.index(line, at) + 1
print(f"README walk: {len(quoted)} lines of examples/demo.cpp, {len(block)} of examples/CMakeLists.txt")
