"""The Python module, beside the program vesk: equal to the bit, whatever the pieces.

    module_test.py FOLDER VESK     folder with the package vesk, the program
"""

import pickle
import subprocess
import sys
import tempfile
import threading
import unittest
import wave

import numpy

sys.path.insert(0, sys.argv[1])
import vesk  # noqa: E402

PROGRAM = sys.argv[2]
RATE = 44100


def noise(frames, seed=1):
    return numpy.random.default_rng(seed).uniform(-0.4, 0.4, (2, frames)).astype("float32")


def rendered(sound, *arguments):
    """What the program makes of it, shape (2, n); samples pass as raw floats."""
    with tempfile.TemporaryDirectory() as folder:
        with wave.open(folder + "/in.wav", "wb") as file:
            file.setnchannels(2)
            file.setsampwidth(4)
            file.setframerate(RATE)
            file.writeframes(numpy.round(sound.T * 2**31).astype("<i4").tobytes())
        out = subprocess.run([PROGRAM, "render", folder + "/in.wav", "-", "--format", "raw",
                              "--quiet", "--tail", "0", *arguments],
                             check=True, capture_output=True).stdout
    return numpy.frombuffer(out, "<f4").reshape(-1, 2).T


class Module(unittest.TestCase):
    def test_gives_the_bits_of_the_program_in_any_pieces(self):
        # Of 24 bits, which 32-bit integers and floats both hold.
        sound = (numpy.round(noise(40000) * 2**20) / 2**20).astype("float32")
        cases = [
            (["--set", "delay=0.05,0.3", "--set", "mod_delay=0.2"],
             {"delay": (0.05, 0.3), "mod_delay": 0.2}),
            (["--preset", "tape"], {"preset": "tape"}),
            (["--seed", "5", "--set", "mod_waveform=random", "--set", "mod_delay=0.4",
              "--set", "repitch=on"],
             {"seed": 5, "mod_waveform": "random", "mod_delay": "40%", "repitch": True}),
        ]
        for arguments, settings in cases:
            wanted = rendered(sound, *arguments)
            for pieces in ([40000], [1, 64, 0, 999, 20000, 18936]):
                effect = vesk.Vesk(RATE, **settings)
                parts = numpy.split(sound, numpy.cumsum(pieces)[:-1], axis=1)
                got = numpy.concatenate([effect.process(part) for part in parts], axis=1)
                self.assertEqual(got.dtype, numpy.float32)
                numpy.testing.assert_array_equal(got, wanted)

    def test_takes_changes_between_calls_and_both_types_and_one_channel(self):
        sound = (numpy.round(noise(6400) * 2**20) / 2**20).astype("float32")
        wanted = rendered(sound, "--set", "delay=0.02", "--at", f"{3200 / RATE} feedback 0.9",
                          "--at", f"{3200 / RATE} reverb_location Pre")
        effect = vesk.Vesk(RATE, delay="20ms")
        first = effect.process(sound[:, :3200].astype("float64"))
        effect.feedback = 0.9
        effect.reverb_location = "pre"
        self.assertEqual(effect.reverb_location.lower(), "pre")
        self.assertEqual(effect.delay, (0.02, 0.02))
        both = numpy.concatenate([first, effect.process(sound[:, 3200:])], axis=1)
        numpy.testing.assert_array_equal(both.astype("float32"), wanted)
        mono, stereo = vesk.Vesk(RATE), vesk.Vesk(RATE)
        numpy.testing.assert_array_equal(mono.process(sound[0]),
                                         stereo.process(numpy.stack([sound[0], sound[0]])))

    def test_refuses_what_is_wrong_in_the_words_of_the_program(self):
        effect = vesk.Vesk(RATE)
        for make, words in [
            (lambda: vesk.Vesk(RATE, mix=50), "mix: 50 is out of range, expected 0 to 1"),
            (lambda: vesk.Vesk(RATE, delay=375), "were milliseconds meant"),
            (lambda: vesk.Vesk(RATE, feedbak=0.5), "the nearest is feedback"),
            (lambda: vesk.Vesk(RATE, preset="tap"), "no preset named"),
            (lambda: vesk.Vesk(-1.0), "rate"),
            (lambda: vesk.Vesk(RATE, channel_mode=7), "channel_mode: "),
            (lambda: setattr(effect, "gate", "perhaps"), "gate: "),
            (lambda: effect.process(noise(10).T), "shape"),
            (lambda: effect.process(noise(10).astype("int16")), "float32 or float64"),
            (lambda: effect.process(numpy.array([0.0, numpy.nan])), "sample 1 is not finite"),
        ]:
            with self.assertRaises(ValueError) as raised:
                make()
            self.assertIn(words, str(raised.exception))
        with self.assertRaises(AttributeError):
            effect.feedbak = 0.5

    def test_is_picklable_and_lets_other_threads_run(self):
        effect = vesk.Vesk(RATE, preset="dub-pingpong", feedback=0.9)
        copy = pickle.loads(pickle.dumps(effect))
        self.assertIsInstance(copy, vesk.Vesk)
        sound = noise(2000)
        numpy.testing.assert_array_equal(copy.process(sound), effect.process(sound))
        long = noise(RATE * 60)
        worker = threading.Thread(target=effect.process, args=(long,))
        worker.start()
        turns = 0
        while worker.is_alive():
            turns += 1
        worker.join()
        self.assertGreater(turns, 1000)

    def test_clears_and_resets(self):
        effect = vesk.Vesk(RATE, delay=0.01)
        for stop in (effect.clear, effect.reset):
            effect.process(noise(4000))
            stop()
            self.assertEqual(numpy.abs(effect.process(numpy.zeros(4000))).max(), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
