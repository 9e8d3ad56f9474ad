"""Which memory is read and written in place."""

import copy
import pickle
import unittest

import numpy

import orvane


class MemoryTest(unittest.TestCase):
    def setUp(self):
        self.base = numpy.random.default_rng(3).standard_normal((12, 20)).astype("float32")
        self.taps = numpy.float32([[1, -2, 0.5], [0.25, 3, 1]])

    def test_strides(self):
        """Views that a pitch expresses need no copy; others are copied, and refused on request."""
        base = self.base
        odd = numpy.frombuffer(b"\0" + base.tobytes(), "u1")[1:].view("float32").reshape(base.shape)
        for view, in_place in ((base[2:9, 3:11], True), (base[::2], True), (base[3:4], True), (base[:, 4:5], True),
                               (base[::-1], False), (base[:, ::2], False), (base.T, False), (odd, False),
                               (base.astype(">f4"), False), (numpy.asfortranarray(base), False),
                               (numpy.broadcast_to(base[0], (5, 20)), False)):
            with self.subTest(strides=view.strides, dtype=view.dtype.str, aligned=view.flags.aligned):
                expected = orvane.convolve(numpy.ascontiguousarray(view, "float32"), self.taps)
                numpy.testing.assert_array_equal(orvane.convolve(view, self.taps), expected)
                if in_place:
                    numpy.testing.assert_array_equal(orvane.convolve(view, self.taps, copy=False), expected)
                else:
                    with self.assertRaisesRegex(ValueError, "input: strides .*; copy=False allows"):
                        orvane.convolve(view, self.taps, copy=False)
        with self.assertRaisesRegex(TypeError, "copy=False allows only arrays"):
            orvane.Convolution(self.taps, (1, 3)).run([[1.0, 2.0, 3.0]], copy=False)
        with self.assertRaisesRegex(TypeError, "copy: 1; allowed"):
            orvane.convolve(base, self.taps, copy=1)

    def test_outputs(self):
        expected = orvane.convolve(self.base, self.taps)
        for name, canvas in (("dense", lambda c: c[:12, :20].copy()), ("pitch", lambda c: c[3:15, 5:25]),
                             ("steps", lambda c: c[:24:2, 39:19:-1]), ("swapped", lambda c: c[:12, :20].astype(">f4"))):
            with self.subTest(name):
                whole = numpy.full((30, 40), 7, "float32")
                out = canvas(whole)
                self.assertIs(orvane.convolve(self.base, self.taps, out=out), out)
                numpy.testing.assert_array_equal(out, expected)
                if out.base is whole:
                    self.assertEqual(int((whole == 7).sum()), whole.size - expected.size)
        integers = numpy.zeros((12, 20), "int16")
        orvane.convolve(self.base * 100, self.taps, out=integers)
        numpy.testing.assert_array_equal(integers, numpy.rint(orvane.convolve(self.base * 100, self.taps)))
        frozen = expected.copy()
        frozen.flags.writeable = False
        for kind, text, out in ((ValueError, "read-only", frozen), (TypeError, "must be an array", [0]),
                                (ValueError, r"shape \(3, 4\); it must be \(12, 20\)", numpy.zeros((3, 4), "f4")),
                                (TypeError, "output: elements of float64", numpy.zeros((12, 20))),
                                (ValueError, "overlap", self.base)):
            with self.assertRaisesRegex(kind, text):
                orvane.Convolution(self.taps, self.base.shape).run(self.base, out)

    def test_objects_keep_copies(self):
        taps = self.taps.copy()
        job = orvane.Convolution(taps, self.base.shape)
        expected = job.run(self.base)
        taps[:] = 0
        numpy.testing.assert_array_equal(job.run(self.base), expected)
        job.set_filter(self.taps * 2)
        numpy.testing.assert_array_equal(job.run(self.base), 2 * expected)
        with self.assertRaisesRegex(TypeError, "they must be float32"):
            job.set_filter(self.taps.astype(float))
        scores = orvane.match(self.base, self.base[2:5, 3:6], map=True).map
        before = scores.copy()
        del job
        orvane.match(self.base, self.base[2:5, 3:6], map=True)
        numpy.testing.assert_array_equal(scores, before)

    def test_objects_travel(self):
        """Copies and pickles have the filter, the pad value and the region of now."""
        frame, patch = (self.base[:6, :8] * 40).astype("int8").view("uint8"), self.base[2:5, 3:6]
        smooth = orvane.Convolution(self.taps, self.base.shape, pad="constant")
        smooth.set_filter(self.taps + 1)
        smooth.set_pad_value(3)
        find = orvane.Matcher(patch, self.base.shape)
        find.set_region(numpy.s_[4:9, 5:])
        fixed = orvane.FixedMedian(3, frame.shape, input="u8.0")
        pattern = orvane.FixedArray(frame[2:4, 3:6], orvane.FixedType("u8.0"))
        spot = orvane.FixedMatcher(pattern, frame.shape, input="u8.0", accumulator="s20.0", output="u16.0")
        for travel in (copy.copy, copy.deepcopy, lambda job: pickle.loads(pickle.dumps(job))):
            numpy.testing.assert_array_equal(travel(smooth).run(self.base), smooth.run(self.base))
            self.assertEqual(travel(find).run(self.base).location, find.run(self.base).location)
            numpy.testing.assert_array_equal(travel(fixed).run(frame).raw, fixed.run(frame).raw)
            self.assertEqual(travel(spot).run(frame).location, (2, 4))


if __name__ == "__main__":
    unittest.main()
