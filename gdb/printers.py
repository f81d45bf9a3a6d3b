"""How GDB shows the library's types.

GDB loads this by itself with the DLL, beside which it stands as NAME.dll-gdb.py; or by `source`.
`print/r` shows what is behind.  Records, keys and results need the DLL's debug information."""

import datetime
import re
import uuid

import gdb
import gdb.printing
import gdb.types

MOST_PARAMETERS = 10_000  # more are none
INFINITE = 0x7FFFFFFFFFFFFFFF
EPOCH = datetime.datetime(1970, 1, 1)


def quoted(text):
    return f'"{text}"'


def chars(pointer, length):
    """Text by its address and length in bytes."""
    memory = gdb.selected_inferior().read_memory(int(pointer), length)
    return bytes(memory).decode('utf-8', 'replace')


def std_text(string):
    return chars(string['_M_dataplus']['_M_p'], int(string['_M_string_length']))


def source_text(string):
    length = int(string['length_'])  # negative: a copy; the greatest: up to the terminator
    if length == 0x7FFFFFFF:
        return string['text_'].string('utf-8', 'replace')
    return chars(string['text_'], abs(length))


def target(pointer):
    """What a RefCountPtr points to, as the type that it really is; None for a null one."""
    plain = pointer['object_']
    if not plain:
        return None
    value = plain.cast(plain.dynamic_type).dereference()
    value.fetch_lazy()
    return value


def location(place):
    file = re.sub(r'^\$Id: (.*) \$$', r'\1', source_text(place['file_id_']))
    return f"{file}({place['line_']}) {source_text(place['function_'])}"


def pairs(params):
    """Names and values of parameters."""
    vector = params['pairs_']['_M_impl']
    begin, count = vector['_M_start'], int(vector['_M_finish'] - vector['_M_start'])
    if not 0 <= count <= MOST_PARAMETERS:
        raise gdb.error(f'{count} parameters')
    for i in range(count):
        yield source_text(begin[i]['name']), std_text(begin[i]['value'])


def record(error):
    values = dict(pairs(error['params_']))
    message = re.sub(r'\{@([^}]*)\}', lambda place: values.get(place[1], place[0]),
                     source_text(error['message_']))
    return f"{source_text(error['code_']['text_'])}: {message}"


def record_parts(error):
    yield from ((name, quoted(value)) for name, value in pairs(error['params_']))
    yield 'location', location(error['location_'])
    if error['nested_']['object_']:
        yield 'cause', error['nested_']


def fraction(billionths):
    return '.' + (f'{billionths:09}'.rstrip('0') or '0')


def duration(time):
    count = int(time['count_'])
    if count == INFINITE:
        return '##INFINITE##'
    sign, count = '-' if count < 0 else '', abs(count)
    seconds, rest = divmod(count, 10**9)
    days, second = divmod(seconds, 86400)
    if count <= 1000:
        text = f'{count}n'
    elif count <= 10**6:
        text = f'{count // 1000}{fraction(count % 1000 * 10**6)}u'
    elif seconds == 0:
        text = f'{count // 10**6}{fraction(count % 10**6 * 1000)}m'
    elif seconds <= 60:
        text = f'{seconds}{fraction(rest)}'
    elif seconds <= 3600:
        text = f'{seconds // 60}m {seconds % 60:02}{fraction(rest)}'
    else:
        if seconds == 86400:
            days, second = 0, seconds
        text = f'{days}d ' if days else ''
        text += f'{second // 3600}h {second // 60 % 60}m {second % 60}{fraction(rest)}'
    return f'{sign}{text}s'


def instant(time):
    count = int(time['count_'])
    if count == INFINITE:
        return '##INFINITE##'
    seconds, rest = divmod(count, 10**9)
    return f'{EPOCH + datetime.timedelta(seconds=seconds)}{fraction(rest)}'


def zoned(time):
    return f"{instant(time['utc_'])} UTC, {int(time['timezone_offset_']):+} min"


def uuid_text(value):
    data = value['data_']['bytes']
    return str(uuid.UUID(bytes_le=bytes(int(data[i]) for i in range(16))))


def uuid_key(key):
    token = target(key['token_'])
    if token is None:
        return str(uuid.UUID(int=0))
    return uuid_text(token['key_value_'].cast(gdb.lookup_type('tarvcore::Uuid').pointer()).dereference())


def string_key(key):
    token = target(key['token_'])
    if token is None:
        return quoted('')
    size = token['key_value_'].cast(gdb.lookup_type('unsigned int').pointer())
    return quoted(chars(size + 1, int(size.dereference())))


def object_key(key):
    token = target(key['token_'])
    if token is None:
        return 'null'
    if gdb.types.has_field(token.type, 'label_'):
        return quoted(std_text(token['label_']))
    return f"{token['key_value_']}"


def future_parts(future):
    """Of its shared state: "value" or "error" once there is one."""
    if not int(future['word_']['word_']['_M_i']) & 2:
        return 'pending', []
    if future['error_']['object_']:
        return None, [('error', future['error_'])]
    return ('done', []) if future.type.template_argument(0).code == gdb.TYPE_CODE_VOID \
        else (None, [('value', future['value_'])])


def result_parts(result):
    """Of what it refers to, by the kind of that."""
    kind = re.search(r'::(Value|Error|Future)ResultImpl<', str(result.type))
    if kind is None:
        return None, [('state', result.address)]
    if kind[1] == 'Error':
        return None, [('error', result['error_'])]
    if kind[1] == 'Future':
        return future_parts(target(result['future_']))
    return (None, [('value', result['value_'])]) if gdb.types.has_field(result.type, 'value_') \
        else ('done', [])


class Shown:
    """A value as a text, and parts with names."""

    def __init__(self, text, parts=()):
        self.text = text
        self.parts = list(parts)
        if self.parts:
            self.children = lambda: iter(self.parts)

    def to_string(self):
        return self.text


def parts_of(pointer, parts):
    """Of what a pointer refers to, if it is not null."""
    state = target(pointer)
    return Shown('empty') if state is None else Shown(*parts(state))


def text_printer(show):
    return lambda value: Shown(show(value))


TYPES = {
    'SourceString': text_printer(lambda value: quoted(source_text(value))),
    'ErrorCode': text_printer(lambda value: quoted(source_text(value['text_']))),
    'SourceLocation': text_printer(location),
    'ErrorParams': lambda value: Shown('parameters', ((n, quoted(v)) for n, v in pairs(value))),
    'ErrorInfo': lambda value: Shown(record(value), record_parts(value)),
    'ErrorException': text_printer(lambda value: value['error_']),
    'RelativeTime': text_printer(duration),
    'AbsoluteTime': text_printer(instant),
    'SimpleDateTime': text_printer(zoned),
    'Uuid': text_printer(uuid_text),
    'UuidKey': text_printer(uuid_key),
    'StringKey': text_printer(string_key),
    'ObjectKey': text_printer(object_key),
    'Future<.*>': lambda value: parts_of(value['impl_'], future_parts),
    'Result<.*>': lambda value: parts_of(value['impl_'], result_parts),
    'RefCountPtr<.*>': text_printer(lambda value: target(value) if value['object_'] else 'null'),
    'InterfacePtr<.*>': text_printer(lambda value: value['interface_']),
}


def safe(show):
    """What cannot be read, or has no debug information, is told in the value's place."""
    def printer(value):
        try:
            return show(value)
        except gdb.error as error:
            return Shown(f'<error: {error}>')
    return printer


printers = gdb.printing.RegexpCollectionPrettyPrinter('tarvcore')
for name, show in TYPES.items():
    printers.add_printer(name, f'^tarvcore::{name}$', safe(show))
gdb.printing.register_pretty_printer(gdb.current_objfile(), printers, replace=True)
