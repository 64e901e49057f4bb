#!/usr/bin/env python3
"""Holds the tables of tests in ARCHITECTURE.md to the tests that there are.

    appendix.py ARCHITECTURE.md FOLDER

Each row of a table that ends in "test" names, behind its last bar but one, programs and their
functions: "program: function, function.row; program". A program is a test program without its tst_,
or any other test by its name in the CMake files. Prints what is named and does not exist.
"""
import pathlib
import re
import sys

IDENTIFIER = re.compile(r'[a-z][A-Za-z0-9]*$')


def functions_of(source):
    return set(re.findall(r'\b([a-z]\w*)\s*\(\)', source.read_text(encoding='utf-8')))


def rows(document):
    """The last cells of the rows of all tables whose last column is called test."""
    in_table = False
    for line in document.read_text(encoding='utf-8').splitlines():
        if not line.startswith('|'):
            in_table = False
            continue
        cells = [cell.strip() for cell in line.strip('|').split('|')]
        if cells[-1] == 'test':
            in_table = True
        elif in_table and not set(cells[-1]) <= set('-'):
            yield line, cells[-1]


def main():
    document, folder = map(pathlib.Path, sys.argv[1:])
    programs = {path.stem.removeprefix('tst_'): path for path in folder.rglob('tst_*.cpp')}
    targets = '\n'.join(path.read_text(encoding='utf-8')
                        for path in [*folder.rglob('CMakeLists.txt'), document])
    known = {name: functions_of(path) for name, path in programs.items()}
    count = 0
    missing = []
    for line, cell in rows(document):
        for group in re.split(r';\s+(?=[a-z_]+\b)', cell):
            name, _, functions = group.partition(':')
            name = name.strip()
            if name not in known:
                if not (folder / 'fuzz' / (name.removeprefix('fuzz_') + '.cpp')).exists() \
                        and not re.search(rf'NAME {re.escape(name)}\b', targets):
                    missing.append(f'{name} in: {line}')
                continue
            count += 1
            for function in functions.split(','):
                function = re.split(r'[.(]', function.strip(), maxsplit=1)[0]
                # What is no identifier is the rest of a row's name that holds a comma.
                if IDENTIFIER.match(function) and function != 'all' \
                        and function not in known[name]:
                    missing.append(f'{name}: {function} in: {line}')
    print(f'{count} entries')
    print('\n'.join(missing))
    return 1 if missing or count == 0 else 0


sys.exit(main())
