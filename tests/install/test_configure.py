"""What a build without a preset is."""

import json
import os
import pathlib
import re
import subprocess

import pytest

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])


def build_type(folder, *options):
    subprocess.run(["cmake", "-S", SOURCE, "-B", folder, "-DSONAPROBE_TESTS=OFF", *options],
                   check=True, capture_output=True)
    [found] = re.findall(r"^CMAKE_BUILD_TYPE:\w+=(.*)$", (folder / "CMakeCache.txt").read_text(),
                         re.MULTILINE)
    return found


def release_type():
    presets = json.loads((SOURCE / "CMakePresets.json").read_text())["configurePresets"]
    [release] = [preset for preset in presets if preset["name"] == "release"]
    return release["cacheVariables"]["CMAKE_BUILD_TYPE"]


@pytest.mark.parametrize("options, expected", [
    ([], release_type()), (["-DCMAKE_BUILD_TYPE=Debug"], "Debug")])
def test_the_build_type_is_that_of_the_release_unless_another_is_asked_for(tmp_path, options,
                                                                           expected):
    assert build_type(tmp_path, *options) == expected
