"""Run by GDB, with the memory of values.cpp: every value is shown as the library says it, and as here.

Faults to catch: a printer that nobody finds, or that looks at members that have gone; text cut off or
with what lies behind it; times that are not the library's; a value that was never made and keeps GDB
from going on."""

import re

import gdb

RECORD = 'error.tarvcore.uuid.parse: Bad UUID = {location = //tests/gdb/values.cpp#1(LINE) f()}'
PARAMS = 'count = "3", name = "Zoë"'
EXPECTED = {
    'empty_string': '""',
    'reference': '"a literal"',
    'part': '"a lit"',
    'copied': '"a copy"',
    'code': '"error.mine.broken"',
    'place': '//tests/gdb/values.cpp#1(LINE) f()',
    'params': f'parameters = {{{PARAMS}}}',
    'no_record': 'null',
    'cause': RECORD,
    'record': f'error.mine.broken: Zoë is 3 times {{@unknown}} = {{{PARAMS}, location = '
              f'//tests/gdb/values.cpp#1(LINE) f(), cause = {RECORD}}}',
    'exception': RECORD,
    'date_time': '2014-07-16 13:23:00.25 UTC, +120 min',
    'no_string_key': '""',
    'string_key': '"a key"',
    'no_object_key': 'null',
    'labelled_key': '"a label"',
    'pending': 'pending',
    'succeeded': '{value = 7}',
    'failed': f'{{error = {RECORD}}}',
    'done': 'done',
    'no_result': 'empty',
    'value_result': '{value = 42}',
    'error_result': f'{{error = {RECORD}}}',
    'void_result': 'done',
    'pending_result': 'pending',
    'succeeded_result': '{value = 7}',
    '*(tarvcore::SourceString*)garbage': '<error: Cannot access memory at address 0x10>',
    '*(tarvcore::ErrorInfo::Ptr*)garbage': '<error: Cannot access memory at address 0x10>',
    '*(tarvcore::Result<int>*)garbage': '<error: Cannot access memory at address 0x10>',
}


def shown(expression):
    text = gdb.execute(f'print {expression}', to_string=True)
    text = re.sub(r'^\$\d+ = ', '', text.strip())
    return re.sub(r'\(\d+\) f\(\)', '(LINE) f()', text)


def main():
    with open(gdb.convenience_variable('expected').string(), encoding='utf-8') as file:
        said = dict(line.rstrip('\n').split('\t') for line in file)
    bad = 0
    for expression, expected in (EXPECTED | said).items():
        actual = shown(expression)
        if actual != expected:
            print(f'{expression} is shown as\n    {actual}\nand not as\n    {expected}')
            bad += 1
    print(f'{len(EXPECTED) + len(said)} values, {bad} shown wrongly')
    gdb.execute(f'quit {min(bad, 1)}')


main()
