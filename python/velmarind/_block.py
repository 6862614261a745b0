# SPDX-License-Identifier: MIT
"""Living blocks: arrays and tables go in and come out."""

from __future__ import annotations

import functools
from collections.abc import Iterator, Mapping, Sequence
from typing import Any

import numpy as np

from velmarind import _native
from velmarind._arrays import array_of, as_given, rate_for, rate_of, require_upright, stated_times, times_of
from velmarind._errors import Error, naming
from velmarind._log import log, warn
from velmarind._manual import docstring, setting_names
from velmarind._names import identifier, literal, literals, unknown
from velmarind._types import Floats, Setting
from velmarind._response import Response
from velmarind._results import Result


class Property:
    """A setting or a command of a living block.

    Attributes
    ----------
    name, identifier : str
        Its literal name, and the one that stands for it as an attribute and a keyword.
    kind : str
        `flag`, `whole number`, `count`, `number`, `matrix`, `choice` or `command`.
    value : bool, int, float, str or array
        What it holds; may be assigned to.
    default : as `value`
        What a new block of the type holds.
    minimum, maximum : float or None
    labels : list of str
        Of a choice.
    writable : bool
    unit, help : str
        As the manual says.
    expected : str
        What may be written.
    """

    def __init__(self, block: Block, name: str) -> None:
        self._block = block
        self.name = name
        self.identifier = identifier(name)

    def __getattr__(self, name: str) -> Any:
        if name.startswith("_"):
            raise AttributeError(name)
        state: Mapping[str, Any] = self._block.property(self.name)
        if name not in state:
            raise AttributeError(name)
        return state[name]

    @property
    def value(self) -> Any:
        return self._block.get(self.name)

    @value.setter
    def value(self, value: Setting) -> None:
        with naming(self._block.id, self.name):
            self._block.set(self.name, value)

    def fire(self) -> None:
        """Fires a command."""
        self._block.fire(self.name)

    def __repr__(self) -> str:
        if self.kind == "command":
            return f"{self.name}: command"
        unit = "" if self.unit in ("", "none") else f" ({' '.join(self.unit.split())})"
        return f"{self.name} = {self.text}{unit}: {self.expected}"


class Properties(Mapping[str, Property]):
    """Settings and commands of a block, by literal names or identifiers."""

    def __init__(self, block: Block) -> None:
        self._block = block

    def __getitem__(self, name: str) -> Property:
        found = literal(name, self)
        if found is None:
            raise unknown("setting", name, self, self._block.id)
        return Property(self._block, found)

    def __setitem__(self, name: str, value: Setting) -> None:
        self[name].value = value

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and literal(name, self) is not None

    def __iter__(self) -> Iterator[str]:
        return iter(setting_names(self._block.type))

    def __len__(self) -> int:
        return len(setting_names(self._block.type))

    def __repr__(self) -> str:
        return "\n".join(repr(each) for each in self.values())


class Block(_native.Block):
    """A living block; `velmarind.block` makes one.

    Called, it runs over a whole recording from the begin, and what it remembers of `push` stays as it is.
    `push(chunk, t=None)` goes on where the last one ended, and is the operation of the extension itself: a
    chunk goes in as an array, and the main output comes out as one. Chunks of any size give the bits of one
    call, with what `finish()` gives at last: what a block such as Resample holds back for more.

    Settings are attributes by their identifiers (`velmarind.identifier`), and `properties` has all there is
    to know of them. Operations of the block go before settings of the same name, which `properties` has all
    the same.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> b = velmarind.block("FilterGain", Gain=2)
    >>> b(np.array([1.0, 2.0, 3.0]))
    array([2., 4., 6.])
    >>> b.Gain = 10
    >>> b.push(np.array([[1.0, 2.0]]))
    array([[10., 20.]])
    >>> b.properties["Gain"].value
    10.0
    """

    _names: dict[str, str]

    def __getattr__(self, name: str) -> Any:
        found = self._literal(name)
        if found is None:
            raise AttributeError(str(unknown("attribute", name, map(identifier, setting_names(self.type)))))
        return self.get(found)

    def __setattr__(self, name: str, value: Any) -> None:
        found = None if hasattr(type(self), name) else self._literal(name)
        if found is not None:
            self.properties[found].value = value
        elif name.startswith("_"):
            object.__setattr__(self, name, value)
        else:
            raise unknown("setting", name, map(identifier, setting_names(self.type)), self.id)

    def _literal(self, name: str) -> str | None:
        return None if name.startswith("__") else literal(name, setting_names(self.type))

    def __dir__(self) -> list[str]:
        return [*super().__dir__(), *map(identifier, setting_names(self.type))]

    @property
    def properties(self) -> Properties:  # type: ignore[override]
        """Settings and commands, by literal names or identifiers."""
        return Properties(self)

    def __call__(self, x: Any = None, t: Any = None, /, **inputs: Any) -> Any:
        """Runs over a whole recording, from the begin.

        Parameters
        ----------
        x : array, Series or DataFrame
            What comes to the main input: `(n,)`, `(n, channels)`, or `(n, rows, columns)` for samples of
            several rows, as frames. Time runs down the rows. Of a block without inputs, a number of steps.
        t : array, optional
            Times of the rows in seconds. Without it those of a time index, else counted by `fs`.
        **inputs
            What comes to other inputs, by identifier or literal name: a row for each row of `x`, or one for
            the first.

        Returns
        -------
        array, Series or DataFrame, or Result
            In the form of `x`; a `Result` of several outputs by name.
        """
        if len(self.outputs) == 1 and not inputs and type(x) is np.ndarray and t is None:
            require_upright(x)
            return self.run(x)
        found = self.results(x, t, **inputs)
        return found if len(self.outputs) > 1 else found[self.outputs[0]]

    def results(self, x: Any = None, t: Any = None, /, **inputs: Any) -> Result:
        """The same with all outputs as a `Result`, which has the times of their samples as well."""
        given = literals(inputs, self.inputs)
        main = self.main_input
        if x is None and main is not None:
            x = given.pop(main, None)
        if x is None:
            wanted = "a number of steps" if main is None else "rows"
            text = f"found nothing for '{main or 'x'}'; expected {wanted}"
            raise Error(text, block=self.id, found="nothing")
        strange = next((name for name in given if name not in self.inputs), None)
        if strange is not None:
            raise unknown("input", strange, map(identifier, self.inputs), self.id)
        if main is None:
            rows: Any = int(x)
        else:
            rows = array_of(x)
            require_upright(rows)
        times = self._times(x, t)
        others: dict[str, Any] = {name: array_of(value) for name, value in given.items()}
        got = self.run_all(rows, times, others)
        return Result(
            {
                name: as_given(_flat(samples, rows), stamps, x, name)
                for name, (stamps, samples) in got.items()
            },
            {name: stamps for name, (stamps, _) in got.items()},
        )

    def _times(self, x: Any, t: Any) -> Any:
        if t is not None:
            return stated_times(t)
        times = times_of(x)
        if times is not None and self.fs is not None and times.size > 1:
            rate_for(x, self.fs)  # refuses another rate than the one that hertz were converted by
        return times

    def response(  # type: ignore[override]
        self, fs: Any = None, points: int = 100, *, input: str = "", output: str = ""
    ) -> Response:
        """Measures what it does to each frequency, from 0 to half the rate.

        Parameters
        ----------
        fs : float, optional
            Rows a second, for frequencies in hertz; without it the block's own, and without that fractions of
            half the rate.
        points : int
            How many frequencies above 0.

        Returns
        -------
        Response
            `frequency`, `gain`, `phase`, and `plot()`.
        """
        rate = rate_of(fs) if fs is not None else self.fs
        return Response(super().response(points, input, output), rate, repr(self))

    def __reduce__(self) -> tuple[Any, ...]:
        """A copy has the settings and what was fired before the first row, and remembers nothing of what was
        pushed."""
        settings = {
            each["name"]: each["value"]
            for each in _native.Block.properties(self)
            if each["kind"] != "command" and each["writable"] and _differs(each["value"], each["default"])
        }
        return _made_again, (self.type, self.fs, self.id, settings, self.commands)

    def __repr__(self) -> str:
        parts = [] if self.fs is None else [f"fs={self.fs:g}"]
        written = {each["target"].split(".", 1)[-1]: each["written"] for each in self.conversions}
        for each in _native.Block.properties(self):
            name = str(each["name"])
            if each["kind"] != "command" and (name in written or _differs(each["value"], each["default"])):
                parts.append(f"{identifier(name)}={written.get(name, _shown(each['value']))}")
        return f"{self.type}({', '.join(parts)})"


def _made_again(
    type: str, fs: float | None, id: str, settings: Mapping[str, Any], commands: Sequence[str] = ()
) -> Block:
    again = block(type, fs=fs, id=id, **settings)
    for command in commands:
        again.fire(command)
    return again


def _differs(value: Any, default: Any) -> bool:
    return not np.array_equal(value, default)


def _shown(value: Any) -> str:
    return str(value.tolist()) if isinstance(value, np.ndarray) else str(value)


def _flat(samples: Any, rows: Any) -> Any:
    """One axis where one went in, as `push` has it."""
    one_axis = isinstance(rows, np.ndarray) and rows.ndim == 1
    if one_axis and isinstance(samples, np.ndarray) and samples.ndim == 2 and samples.shape[1] == 1:
        return samples[:, 0]
    return samples


@functools.lru_cache(maxsize=None)
def block_class(type_name: str) -> type[Block]:
    """The class of a type, whose documentation is the page of the manual."""
    return type(type_name, (Block,), {"__doc__": docstring(type_name), "__module__": "velmarind"})


def block(type: str, /, *, fs: Any = None, id: str | None = None, **settings: Setting) -> Block:
    """Makes a living block.

    Parameters
    ----------
    type : str
        One of `velmarind.catalog()`. `help` of what comes back is its page of the manual.
    fs : float, Series or DataFrame, optional
        Rows a second, or data whose time index has them. Settings in hertz and seconds need it; there is no
        default.
    id : str, optional
        What messages call the block; without it its type.
    **settings
        By identifier or literal name: numbers, flags, labels, matrices, or texts with a unit, as `"5 Hz"`.

    Returns
    -------
    Block

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> b = velmarind.block("FilterButterworth", fs=100, Order=4, RelativeCutOffFreq="5 Hz", Mode="LowPass")
    >>> b
    FilterButterworth(fs=100, RelativeCutOffFreq=5 Hz, Order=4)
    >>> b(np.ones((500, 3))).shape
    (500, 3)
    >>> velmarind.block("FilterBandPass", fs=100, Low_Cutoff_Freq_relative="1 Hz").Low_Cutoff_Freq_relative
    0.02
    """
    with naming(id or type):
        made = block_class(type)(type, literals(settings, setting_names(type)), rate_of(fs), id or type)
    for conversion in made.conversions:
        log.info("%s: %s", conversion["target"], conversion["sentence"])
    for sentence in made.warnings:
        warn(sentence)
    return made


__all__ = ["Block", "Floats", "Properties", "Property", "block"]
