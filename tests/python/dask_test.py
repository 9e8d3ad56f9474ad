"""Filters over Dask's arrays give the bits of the whole array, however it is cut."""

import unittest

import dask
import dask.array
import numpy

import orvane
import orvane.dask

PADS = ("constant", "replicate", "symmetric", "circular", "mirror")
MODES = ("valid", "same", "full")


class DaskTest(unittest.TestCase):
    def setUp(self):
        self.random = numpy.random.default_rng(11)
        self.addCleanup(dask.config.set(scheduler="synchronous").__exit__, None, None, None)

    def cut(self, array):
        """The array in random chunks, some of a single element."""
        chunks = []
        for extent in array.shape:
            inner = self.random.choice(numpy.arange(1, extent), self.random.integers(0, extent), replace=False)
            chunks.append(tuple(numpy.diff([0, *sorted(inner.tolist()), extent]).tolist()))
        return dask.array.from_array(array, chunks=tuple(chunks))

    def values(self, shape, dtype):
        dtype = numpy.dtype(dtype)
        if dtype.kind == "b":
            return self.random.random(shape) < 0.5
        if dtype.kind in "iu":
            return self.random.integers(0, 100, shape).astype(dtype)
        values = self.random.standard_normal(shape)
        return (values + 1j * self.random.standard_normal(shape) if dtype.kind == "c" else values).astype(dtype)

    def same(self, lazy, whole):
        found = lazy.compute()
        self.assertEqual((lazy.shape, lazy.dtype, found.dtype), (whole.shape, whole.dtype, whole.dtype))
        self.assertEqual(found.tobytes(), whole.tobytes())

    def test_every_pad_and_mode_in_any_rank(self):
        shapes = (((13,), (4,)), ((3,), (9,)), ((9, 11), (3, 4)), ((2, 5), (5, 8)), ((5, 4, 6), (3, 2, 4)),
                  ((3, 4, 3, 4), (2, 3, 1, 2)))
        for number, (pad, mode, (shape, window)) in enumerate((p, m, s) for p in PADS for m in MODES for s in shapes):
            if mode == "valid" and any(h > u for u, h in zip(shape, window)):
                continue
            kind, taps = (("float32", "float32"), ("uint8", "float64"), ("float64", "float64"))[number % 3]
            array, taps = self.values(shape, kind), self.values(window, taps)
            options = {"pad": pad, "mode": mode, "pad_value": 2.5}
            for name in ("convolve", "correlate"):
                with self.subTest(name=name, shape=shape, window=window, dtype=kind, **options):
                    self.same(getattr(orvane.dask, name)(self.cut(array), taps, **options),
                              getattr(orvane, name)(array, taps, **options))
            if len(shape) <= 2:
                options["pad_value"] = 2
                with self.subTest(name="median", shape=shape, window=window, dtype=kind, **options):
                    self.same(orvane.dask.median(self.cut(array), window, **options),
                              orvane.median(array, window, **options))

    def test_separable_of_all_types(self):
        for kind, taps in (("float32", "float32"), ("complex64", "float32"), ("float32", "complex64"),
                           ("complex128", "complex128"), ("uint8", "float32"), ("int16", "complex128")):
            array, row, column = self.values((8, 9), kind), self.values(5, taps), self.values(4, taps)
            for pad, mode in ((p, m) for p in PADS for m in MODES):
                with self.subTest(kind=kind, taps=taps, pad=pad, mode=mode):
                    value = 1.5 - 0.5j if kind[0] == "c" else 1.5
                    options = {"pad": pad, "mode": mode, "pad_value": value}
                    self.same(orvane.dask.separable(self.cut(array), row, column, **options),
                              orvane.separable(array, row, column, **options))

    def test_choices(self):
        array, taps = self.values((9, 12), "float32"), self.values((3, 5), "float32")
        stack = self.values((2, 7, 8, 3), "uint8")
        for pad in PADS:
            self.same(orvane.dask.convolve(self.cut(array), taps, normalise="energy", pad=pad, pad_value=1),
                      orvane.convolve(array, taps, normalise="energy", pad=pad, pad_value=1))
            self.same(orvane.dask.median(self.cut(stack), (3, 4), axes=(2, 1), pad=pad),
                      orvane.median(stack, (3, 4), axes=(2, 1), pad=pad))
            self.same(orvane.dask.median(self.cut(array > 0), 3, pad=pad), orvane.median(array > 0, 3, pad=pad))
            for region in (numpy.s_[2:7, -3:5], numpy.s_[:4, 6:99], numpy.s_[3:3, :]):
                for mode in MODES:
                    filters, options = (taps[0], taps[0, :2]), {"region": region, "pad": pad, "mode": mode}
                    self.same(orvane.dask.separable(self.cut(array), *filters, **options),
                              orvane.separable(array, *filters, **options))
        self.same(orvane.dask.convolve(self.cut(stack), taps, axes=(1, 2), dtype="int16"),
                  orvane.convolve(stack, taps, axes=(1, 2), dtype="int16"))
        lazy = orvane.dask.convolve(self.cut(array), taps)
        self.assertEqual(lazy.chunks, orvane.dask.median(lazy, 3).chunks)
        for kind, text, call in (
                (ValueError, "reflect", lambda: orvane.dask.median(lazy, 3, pad="reflect")),
                (TypeError, "differ in precision", lambda: orvane.dask.convolve(lazy, taps.astype(float))),
                (ValueError, "mode valid", lambda: orvane.dask.median(lazy, (3, 99), mode="valid")),
                (ValueError, "axes=", lambda: orvane.dask.median(lazy, (3, 3, 3))),
                (ValueError, "unknown sizes", lambda: orvane.dask.median(lazy[lazy[:, 0] > 0], 3)),
                (ValueError, "pad value", lambda: orvane.dask.median(lazy > 0, 3, pad="constant", pad_value=2))):
            with self.assertRaisesRegex(kind, text):
                call()

    def check_match(self, array, template, **options):
        whole, found = orvane.match(array, template, **options), \
            orvane.dask.match(self.cut(array), template, **options).compute()
        for name in ("found", "location", "window", "refined", "region_valid", "neighbourhood_valid", "positions"):
            if whole.found or name not in ("region_valid", "positions"):
                self.assertEqual(getattr(found, name), getattr(whole, name), name)
        numpy.testing.assert_array_equal(found.score, whole.score)
        self.assertIs(type(found.score), type(whole.score))
        if whole.neighbourhood is not None:
            numpy.testing.assert_array_equal(found.neighbourhood, whole.neighbourhood)

    def test_matching_keeps_the_first_of_equals(self):
        """Few different values, so that many scores are equal, and NaN at the start and elsewhere."""
        for kind in ("float32", "uint8", "bool", "complex64"):
            for metric in ("sad", "ssd", "maxad", "product") + (("cosine", "coefficient") if kind != "bool" else ()):
                if kind == "complex64" and metric in ("cosine", "coefficient"):
                    continue
                array = self.random.integers(0, 3, (10, 11)).astype(kind)
                template = array[4:6, 5:8].copy() if kind != "bool" else array[4:6, 5:8]
                for mode in MODES:
                    for region in (None, numpy.s_[3:8, 2:20], numpy.s_[-9:2, :], numpy.s_[4:4, :]):
                        with self.subTest(kind=kind, metric=metric, mode=mode, region=region):
                            real = kind != "complex64"
                            self.check_match(array, template, metric=metric, mode=mode, region=region,
                                             refine=real and kind != "bool",
                                             neighbourhood=3 if mode == "valid" else 0)
                            whole = orvane.match(array, template, metric=metric, mode=mode, region=region, map=True)
                            if whole.found:
                                self.same(orvane.dask.scores(self.cut(array), template, metric=metric, mode=mode,
                                                             region=region), whole.map)
                            if real:
                                options = {"distance": 2.5, "metric": metric, "mode": mode, "region": region,
                                           "refine": True}
                                self.assertEqual(orvane.matches(array, template, 4, **options),
                                                 orvane.dask.matches(self.cut(array), template, 4, **options).compute())
        array = self.values((10, 11), "float64")
        for place in ((0, 0), (5, 5)):
            array[place] = numpy.nan
            for metric in ("sad", "coefficient"):
                self.check_match(array, array[6:8, 7:9].copy(), metric=metric)
                self.check_match(array + 0j, array[6:8, 7:9] + 0j) if metric == "sad" else None


if __name__ == "__main__":
    unittest.main()
