"""A stereo modulation delay: numpy arrays through the same code as the object and the plugin.

    import vesk
    echo = vesk.Vesk(44100, preset="tape", feedback=0.6, delay="375ms")
    wet = echo.process(dry)          # shape (2, n), float32 or float64
"""

import os

from . import _vesk

__all__ = ["Vesk", "presets"]

_folder = os.path.join(os.path.dirname(os.path.abspath(__file__)), "presets")


def presets():
    """The names of the presets that come with the module."""
    return sorted(name[:-4] for name in os.listdir(_folder) if name.endswith(".txt"))


class Vesk(_vesk.Vesk):
    __doc__ = _vesk.Vesk.__doc__

    def __init__(self, rate, preset=None, seed=None, **attributes):
        """rate: Hz. preset: one of presets(), or a file. seed: makes what is random the same every
        time. attributes: see Vesk.attributes(). Raises ValueError."""
        if preset is not None and os.sep not in preset and not preset.endswith(".txt"):
            if preset not in presets():
                raise ValueError(f"no preset named \"{preset}\", there are: {', '.join(presets())}")
            preset = os.path.join(_folder, preset + ".txt")
        super().__init__(rate, preset=preset, seed=seed, **attributes)

    def __setattr__(self, name, value):
        # A misspelt attribute would otherwise be a new member that nobody hears.
        if not hasattr(type(self), name):
            raise AttributeError(f"no attribute named \"{name}\", Vesk.attributes() lists them")
        super().__setattr__(name, value)
