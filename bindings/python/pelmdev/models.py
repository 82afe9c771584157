"""One class per model family, built from the export table (_tables.py).

Each class has the family's functions as methods named in snake case
(PelmRadio_SetLDisplayText is Radio.set_l_display_text): its inputs are the
method's arguments (text as str, segment bytes and glyphs as sequences of
int), its outputs the result: one value, or a named tuple of several
(Radio.get_control_vals() -> RadioControlVals(dial1, dial2, switches)).
models.pyi declares them for type checkers.
"""

from __future__ import annotations

import ctypes
import inspect
import re
from collections import namedtuple
from typing import Any, Callable, Sequence

from ._library import C_TYPES
from ._panel import Panel
from ._tables import FAMILIES, INPUT_RECORDS
from .errors import check

# Segment bytes and glyphs are passed in a zero-padded buffer at least this
# long: every display has fewer positions, so a short sequence blanks the rest.
_ARRAY_ROOM = 16
# The key-code getter fills an array of this many codes and counts the valid ones.
_KEYCODES = ("PelmKeypad", "GetKeycodes")
_KEYCODE_ROOM = 4


def _snake(name: str) -> str:
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).lower()


def _text(value: str, name: str) -> bytes:
    if not isinstance(value, str):
        raise TypeError(f"{name} must be str, not {type(value).__name__}")
    if "\0" in value:
        raise ValueError(f"{name} must not contain NUL")
    return value.encode("latin-1", errors="replace")


def _array(values: Any, ctype: str, name: str) -> Any:
    values = list(values)
    buffer = (C_TYPES[ctype] * max(len(values), _ARRAY_ROOM))()
    for position, value in enumerate(values):
        if not isinstance(value, int):
            raise TypeError(f"{name}[{position}] must be int, not {type(value).__name__}")
        buffer[position] = value
    return buffer


def _method(family: str, operation: str, parameters: tuple, family_name: str) -> Callable[..., Any]:
    function_name = f"{family}_{operation}"
    inputs = [(kind, ctype, _snake(name)) for kind, ctype, name in parameters if kind != "out"]
    outputs = [(ctype, _snake(name)) for kind, ctype, name in parameters if kind == "out"]
    result_type = None
    if len(outputs) > 1 and (family, operation) != _KEYCODES:
        result_type = namedtuple(f"{family_name}{operation.removeprefix('Get')}", [n for _, n in outputs])

    def call(self: Panel, *args: Any) -> Any:
        if len(args) != len(inputs):
            raise TypeError(f"{_snake(operation)}() takes {len(inputs)} argument(s): "
                            f"{', '.join(n for _, _, n in inputs) or 'none'}")
        given = iter(args)
        c_args: list[Any] = []
        values: list[Any] = []
        for kind, ctype, name in parameters:
            if kind == "in":
                c_args.append(next(given))
            elif kind == "text":
                c_args.append(_text(next(given), _snake(name)))
            elif kind == "array":
                c_args.append(_array(next(given), ctype, _snake(name)))
            else:
                room = _KEYCODE_ROOM if (family, operation) == _KEYCODES and name == "keys" else 1
                value = (C_TYPES[ctype] * room)()
                values.append(value)
                c_args.append(value)
        status = getattr(self.cockpit.library, function_name)(self.index, *c_args)
        check(status, f"{function_name}({self.index})")
        if (family, operation) == _KEYCODES:
            keys, count = values
            return tuple(keys[: min(count[0], _KEYCODE_ROOM)])
        if result_type is not None:
            return result_type(*(value[0] for value in values))
        return values[0][0] if values else None

    annotations = {"in": int, "text": str, "array": Sequence[int]}
    call.__signature__ = inspect.Signature(  # type: ignore[attr-defined]
        [inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY)]
        + [inspect.Parameter(name, inspect.Parameter.POSITIONAL_ONLY, annotation=annotations[kind])
           for kind, _, name in inputs])
    call.__name__ = _snake(operation)
    call.__doc__ = f"{function_name}: see pelm_exports.h."
    return call


def _model_class(family: str, model_type: int, operations: tuple) -> type[Panel]:
    name = family.removeprefix("Pelm")
    namespace: dict[str, Any] = {"MODEL_TYPE": model_type, "FAMILY": family,
                                 "__doc__": f"A panel of model type {model_type} ({family}_* functions)."}
    for operation, parameters in operations:
        namespace[_snake(operation)] = _method(family, operation, parameters, name)
    return type(name, (Panel,), namespace)


MODEL_CLASSES: dict[int, type[Panel]] = {
    model_type: _model_class(family, model_type, operations)
    for family, (model_type, operations) in FAMILIES.items()
}
globals().update({cls.__name__: cls for cls in MODEL_CLASSES.values()})


def model_class(model_type: int) -> type[Panel]:
    """The class of a model type code (as callbacks give it)."""
    return MODEL_CLASSES[model_type]


def _record_type(name: str, fields: tuple) -> tuple[type, type]:
    class Record(ctypes.Structure):
        _pack_ = 1
        _fields_ = [(field, C_TYPES[ctype] * count if count > 1 else C_TYPES[ctype])
                    for field, ctype, count in fields]

    return Record, namedtuple(f"{name}Input", [field for field, _, _ in fields])


_RECORDS = {model_type: _record_type(name, fields) for model_type, (name, fields) in INPUT_RECORDS.items()}


def decode_input(model_type: int, record: int) -> tuple[Any, ...]:
    """The input record at address `record` of model `model_type` as a named
    tuple (arrays as tuples)."""
    structure, result = _RECORDS[model_type]
    raw = structure.from_address(record)
    return result(*(tuple(value) if isinstance(value, ctypes.Array) else value
                    for value in (getattr(raw, field) for field, _ in structure._fields_)))
