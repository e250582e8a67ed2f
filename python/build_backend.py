"""The build backend: setuptools, also where the machine has it and no network may fetch it.

pip builds in an environment of its own, in which the system's packages are hidden; nothing that this
package needs is newer than Debian's, so they are shown again.
"""

import sys

try:
    import setuptools  # noqa: F401
except ImportError:
    sys.path.append("/usr/lib/python3/dist-packages")

from setuptools.build_meta import *  # noqa: E402,F403


def get_requires_for_build_wheel(config_settings=None):
    return []


def get_requires_for_build_editable(config_settings=None):
    return []
