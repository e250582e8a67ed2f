"""Wrong arguments: each is named, whichever function it goes to."""

from __future__ import annotations

import inspect

import clutterclassifier as cc
import numpy as np
import pytest
from clutterclassifier._arrays.arguments import (as_field, as_field_like, finite, gate_spacing, number, positive,
                                                 whole, window_pair)
from clutterclassifier._arrays.scans import angles, per_gate, per_scan

NAN = np.nan
F, C = np.zeros((2, 3, 30)), np.zeros((2, 3, 30), np.uint8)
EVEN = np.arange(60) * 250.0


@pytest.mark.parametrize("check, arguments, error, message", [
    (as_field, [[1, 2]], ValueError, r"dimensions \(azimuth, range\), not the shape \(2,\)"),
    (as_field, [np.zeros((0, 4))], ValueError, "is empty"),
    (as_field, [np.broadcast_to(np.float32(0), (65536, 65536))], ValueError, "more gates than"),
    (as_field, [np.zeros((2, 5), complex)], TypeError, "must hold real numbers"),
    (as_field, [[["a"]]], TypeError, "must hold real numbers"),
    (as_field, [None], TypeError, "must hold real numbers"),
    (as_field, [[[1.0, 2.0], [3.0]]], ValueError, "is not an array"),
    (as_field_like, [F[0], F, "dbzh"], ValueError, r"has the shape \(3, 30\), but dbzh has \(2, 3, 30\)"),
    (as_field_like, [np.broadcast_to(np.float32(0), (65536, 65536)), F, "dbzh"], ValueError, "has the shape"),
    (angles, [np.zeros(30), F.shape], ValueError, r"shape \(30,\), but one value per ray has \(2, 3\)"),
    (angles, [[0, NAN, 0], F.shape], ValueError, "must hold finite numbers"),
    (per_scan, [np.zeros(3), F.shape], ValueError, r"shape \(3,\), but one value per scan has \(2,\)"),
    (per_scan, [[0, NAN], F.shape], ValueError, "must be a finite number"),
    (per_gate, [np.zeros(30), F.shape], ValueError, r"shape \(30,\), but the scans have \(2, 3, 30\)"),
    (number, [NAN], ValueError, "must be a number, not nan"),
    (number, [[1, 2]], ValueError, r"must be a single number, .*\(2,\)"),
    (number, [None], TypeError, "must be a number, not None"),
    (number, [10**400], ValueError, "is too large"),
    (finite, [np.inf], ValueError, "must be a finite number, not inf"),
    (positive, [0], ValueError, "must be positive, not 0"),
    (whole, [3.7], ValueError, "must be a whole number of at least 1, not 3.7"),
    (whole, [9, 0, 8], ValueError, "must be a whole number within 0 and 8, not 9"),
    (whole, ["a"], TypeError, "must be a number"),
])
def test_a_wrong_value_is_refused(check, arguments, error, message):
    with pytest.raises(error, match=message) as caught:
        check("argument", *arguments)
    assert str(caught.value).startswith("argument")


@pytest.mark.parametrize("ranges, message", [
    (np.arange(59) * 250, r"shape \(59,\), but there are 60 gates"), (np.zeros(60), "must rise by at least 1 m"),
    (NAN, "must rise by at least 1 m"), (np.delete(np.arange(61), 5) * 250.0, "evenly, not by 250 to 500 m"),
    (np.append(0, np.arange(59)) * 250.0, "evenly, not by 0 to 250 m"), (np.where(EVEN == 1750, NAN, EVEN), "evenly"),
    ([0, 100, *np.arange(5e3, 19250, 250), 1e5], "evenly, not by 100 to 81000")])
def test_ranges_rise_evenly(ranges, message):
    with pytest.raises(ValueError, match=message):
        gate_spacing(ranges, 60)


@pytest.mark.parametrize("window, options, error, message", [
    ((4, 3), {"odd": True}, ValueError, "two odd sizes and more than one gate"),
    ((1, 1), {"odd": True}, ValueError, "two odd sizes and more than one gate"), ((5,), {}, ValueError, "a pair"),
    ((5.5, 3), {}, ValueError, "whole number"), ((2**33 + 1, 3), {}, ValueError, "whole number within"),
    ((2**20, 2**20), {}, ValueError, "too many gates"), ((1, 5), {"least": 2}, ValueError, "at least 2"),
    (5, {}, TypeError, "a pair"), ("53", {}, TypeError, "a pair"), ((5, None), {}, TypeError, "a number")])
def test_windows_are_pairs_of_sizes(window, options, error, message):
    with pytest.raises(error, match=f"window.*{message}"):
        window_pair("window", window, **options)


#: Whatever a function needs at least, by the names of arguments.
NEEDED = {"range": 100.0, "radar_constant": 0.0, "threshold": 1.0, "elevation": 0.0, "alpha": 0.07,
          "phase_rise": 9.0, "between": (0, 500), "min_rhohv": 0, "min_dbzh": 0, "max_dbzh": 1, "classes": C,
          "height": 100.0, "profiles": "/dev/null", "first": F, "second": F}
FURTHER = {"system_phase": {"classes": C}, "rain_rate": {"dbzh": F, "zdr": F, "relation": "z_zdr"},
           "despeckle": {"window": (5, 5)}}
NOT_CHECKED = {"open_dx", "open_polar", "open_record", "open_uf", "read", "recognise", "check_config",
               "config_table", "example_config", "membership_directory", "vertical_profiles", "write"}
FUNCTIONS = {name: function for name, function in vars(cc).items()
             if name in cc.__all__ and inspect.isfunction(function) and name not in NOT_CHECKED}
USED_AS_GIVEN = {"rhi", "closed", "decibels", "fill_gaps", "remove_isolated", "all_classes", "certainty"}


def call_of(name: str) -> dict[str, object]:
    needed = [one.name for one in inspect.signature(FUNCTIONS[name]).parameters.values() if one.default is one.empty]
    return {argument: NEEDED.get(argument, F) for argument in needed} | FURTHER.get(name, {})


def arguments_of(chosen) -> list[tuple[str, str]]:
    return [(name, argument) for name, function in FUNCTIONS.items()
            for argument in inspect.signature(function).parameters if chosen(name, argument)]


@pytest.mark.parametrize("name, argument", arguments_of(lambda name, argument: argument not in USED_AS_GIVEN))
def test_a_word_is_refused_by_name(name, argument):
    """The same for every argument of every function, so that none goes without its check."""
    wrong = {"config": 5, "between": ("low", 1), "profiles": "/no/profiles", "membership": "/no/membership"}
    stage = {"what": cc.Stage.BLANKING} if (name, argument) == ("process", "classes") else {}
    with pytest.raises((TypeError, ValueError, FileNotFoundError), match=argument.rstrip("s")):
        FUNCTIONS[name](**call_of(name) | stage | {argument: wrong.get(argument, "low")})


@pytest.mark.parametrize("name, argument", arguments_of(
    lambda name, argument: argument in ("zdr", "phidp", "rhohv", "vrad", "wrad", "ldr", "clutter_likelihood", "mask",
                                        "classes", "valid", "specific_attenuation", "second")
    and list(inspect.signature(FUNCTIONS[name]).parameters)[0] != argument))
def test_fields_have_one_shape(name, argument):
    wanted = {("system_phase", "rhohv"): {"classes": None},
              ("process", "classes"): {"what": cc.Stage.BLANKING}}.get((name, argument), {})
    with pytest.raises(ValueError, match=rf"{argument} has the shape \(3, 30\), but \w+ has \(2, 3, 30\)"):
        FUNCTIONS[name](**call_of(name) | wanted | {argument: F[0]})


@pytest.mark.parametrize("call, message", [
    (lambda: cc.classify(F, range=1.0, radar_constant=0, inputs=512),
     "inputs must be a whole number within 0 and 511"),
    (lambda: cc.classify(F, range=1.0, radar_constant=0, inputs=[]), "inputs selects nothing"),
    (lambda: cc.classify(F, range=1.0, radar_constant=0, inputs="wrad"), "requested, but not given: wrad"),
    (lambda: cc.process(F, range=1.0, what=256), "what must be a whole number within 0 and 255"),
    (lambda: cc.texture(F, gates=4), "gates and rays must be two odd sizes"),
    (lambda: cc.isolated_gates(C, gates=1), "gates must be a whole number of at least 2"),
    (lambda: cc.isolated_gates(C, at_most=-1), "at_most"),
    (lambda: cc.despeckle(F + 0.5), "classes must hold codes"),
    (lambda: cc.system_phase(F), "either rhohv or classes"),
    (lambda: cc.system_phase(F, rhohv=F, classes=C), "either rhohv or classes"),
    (lambda: cc.attenuation(F, phidp=F, classes=C, range=1.0, algorithm=7), "no such algorithm: 7"),
    (lambda: cc.attenuation(F, phidp=F, classes=C, range=1.0, elevation=NAN), "elevation must be a finite"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, method=["profile"]), "no such method"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, method="phase_slope"), "needs phidp"),
    (lambda: cc.specific_attenuation(F, classes=C, range=1.0, a=-1e-5), "a must hold finite"),
    (lambda: cc.vertical_statistics(**call_of("vertical_statistics") | {"elevation": 45.0}),
     "within 88 and 92"),
    (lambda: cc.rain_statistics(**call_of("rain_statistics") | {"between": (500, 500)}),
     "between must be two ranges"),
    (lambda: cc.rain_statistics(**call_of("rain_statistics") | {"between": (0, 3001)}),
     "within 30 gates"),
    (lambda: cc.rain_rate([1.0], coefficients=[200, 0]), "coefficients must be positive"),
    (lambda: cc.rain_rate([1.0], coefficients=[1, 2, 3]), "has 2 coefficients, not 3"),
    (lambda: cc.rain_rate(kdp=[1.0]), "'z' needs dbzh"),
    (lambda: cc.rain_rate([1.0], zdr=[1.0]), "'z' does not use zdr"),
    (lambda: cc.rain_to_z(1.0, a=1e-60), "a must be positive"),
    (lambda: cc.rain_to_z(1.0, a=1e60), "a must be a finite"),
    (lambda: cc.beam_height(np.zeros(3), np.zeros(2)), r"elevation has the shape \(2,\).*range.*\(3,\)"),
    (lambda: cc.beam_pattern(0.0), "range must be positive"),
    (lambda: cc.synthetic_arrays(nrays=2**20, ngates=2**20), "ngates"),
])
def test_what_makes_no_sense_is_named(call, message):
    with pytest.raises(ValueError, match=message):
        call()
