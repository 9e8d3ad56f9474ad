"""Pictures of every kind: what is read, what is written, what is kept beside the samples."""

import io
import itertools
import subprocess
import unittest

import numpy
from command_case import TOOL, CommandCase
from PIL import Image, ImageCms
from tiff_case import read_tiff, tiff

COPY = ("--kernel", "1")
TYPES = ("u1", "u2", "u4", "i1", "i2", "i4", "f4", "f8", "c8", "c16")


class FormatsTest(CommandCase):
    def copied(self, data, out="out.tif", *options):
        """What comes out if nothing is done to a file, and what was said."""
        (self.folder / "in").write_bytes(data)
        said = self.succeed("convolve", "in", out, *COPY, *options)
        if out.endswith(".npy"):
            return numpy.load(self.folder / out), said
        return read_tiff((self.folder / out).read_bytes()), said

    def values(self, kind, shape):
        if kind[0] in "ui":
            limits = numpy.iinfo(kind)
            return self.random.integers(limits.min, limits.max, shape, kind, endpoint=True)
        values = self.random.normal(size=shape)
        return (values + (1j * self.random.normal(size=shape) if kind[0] == "c" else 0)).astype(kind)

    def test_tiff_of_all_types_and_layouts(self):
        layouts = itertools.cycle(itertools.product("<>", (False, True), (0, 16), (False, True), (False, True)))
        for kind, channels in itertools.product(TYPES, (1, 2, 3, 4, 6)):
            for order, big, tile, separate, packed in itertools.islice(layouts, 5):
                image = self.values(kind, (*self.random.integers(1, 40, 2), channels))
                alpha = channels in (2, 4)
                with self.subTest(kind=kind, channels=channels, order=order, big=big, tile=tile, separate=separate):
                    data = tiff(image, order=order, big=big, tile=tile, separate=separate, packed=packed, alpha=alpha)
                    ((found, tags),), said = self.copied(data)
                    numpy.testing.assert_array_equal(found, image)
                    self.assertEqual((found.dtype, said), (image.dtype, ""))
                    self.assertEqual((tags[259][0], tags.get(338, (0,))[-1]), (8 if packed else 1, 2 if alpha else 0))

    def test_tiff_of_few_bits_palettes_and_white_as_zero(self):
        for bits, tile in itertools.product((1, 2, 4), (0, 16)):
            image = self.random.integers(0, 2**bits, (9, 21, 1)).astype("u1")
            full = image * (255 // (2**bits - 1))
            found, _ = self.copied(tiff(image, bits=bits, tile=tile), "out.npy")
            numpy.testing.assert_array_equal(found, full[..., 0])
            found, _ = self.copied(tiff(image, bits=bits, tile=tile, photometric=0), "out.npy")
            numpy.testing.assert_array_equal(found, 255 - full[..., 0])
            for factor in (257, 1, 300):
                colours = self.random.integers(0, 200, (3, 2**bits)) * factor
                more = {320: (3, colours.ravel().tolist())}
                found, _ = self.copied(tiff(image, bits=bits, tile=tile, photometric=3, more=more), "out.npy")
                wanted = colours.T[image[..., 0]] // (257 if factor == 257 else 1)
                numpy.testing.assert_array_equal(found, wanted)
        white = self.values("u2", (5, 6, 1))
        numpy.testing.assert_array_equal(self.copied(tiff(white, photometric=0))[0][0][0], 65535 - white)

    def test_stacks_are_filtered_page_by_page(self):
        pages = [self.values("u2", (7, 9, 1)) for _ in range(4)]
        found, said = self.copied(tiff(*pages))
        self.assertEqual((len(found), said), (4, ""))
        for page, (samples, _) in zip(pages, found):
            numpy.testing.assert_array_equal(samples, page)
        numpy.testing.assert_array_equal(self.copied(tiff(*pages), "out.npy")[0], numpy.stack(pages)[..., 0])
        found, said = self.copied(tiff(pages[0], pages[1][:3]))
        self.assertEqual((len(found), said), (1, "orvane: out.tif: dropped: 1 page that are not like the first\n"))

    def test_axes_of_arrays(self):
        stack = self.random.normal(size=(3, 2, 7, 9))
        numpy.save(self.folder / "in.npy", stack)
        self.succeed("convolve", "in.npy", "out.npy", "-k", "1,2;3,4;5,6", "--axes", "TZYX", "-m", "full")
        found = numpy.load(self.folder / "out.npy")
        self.assertEqual(found.shape, (3, 2, 9, 10))
        for t, z in itertools.product(range(3), range(2)):
            numpy.save(self.folder / "plane.npy", stack[t, z])
            self.succeed("convolve", "plane.npy", "one.npy", "-k", "1,2;3,4;5,6", "-m", "full")
            numpy.testing.assert_array_equal(found[t, z], numpy.load(self.folder / "one.npy"))
        image = self.random_image(9, 7, 3).astype("u1")
        numpy.save(self.folder / "colours.npy", image)
        self.succeed("median", "colours.npy", "out.png", "-w", "1x1", "--axes", "YXC")
        numpy.testing.assert_array_equal(self.read("out.png")[0], image)

    def test_jpeg_and_compressed_tiff_as_another_decoder_reads_them(self):
        smooth = numpy.add.outer(numpy.arange(40), numpy.arange(50))[..., None] * [2, 1, 0] + [0, 50, 99]
        for mode in ("RGB", "L"):
            picture = Image.fromarray(smooth.clip(0, 255).astype("u1")).convert(mode)
            for format, settings in (("jpeg", {"quality": 90}), ("jpeg", {"progressive": True, "subsampling": 0}),
                                     ("tiff", {"compression": "tiff_lzw"}), ("tiff", {"compression": "packbits"}),
                                     ("tiff", {"compression": "jpeg", "quality": 95})):
                file = io.BytesIO()
                picture.save(file, format, **settings)
                found, _ = self.copied(file.getvalue(), "out.npy")
                wanted = numpy.array(Image.open(file)).astype(int)
                self.assertLessEqual(abs(found - wanted).max(), 2 if format == "jpeg" or "jpeg" in str(settings) else 0)

    def test_the_same_samples_give_the_same_result_whatever_the_file(self):
        image = self.random_image(37, 29, 3)
        self.write("a.png", image)
        (self.folder / "b.tif").write_bytes(tiff(image.astype("u1"), tile=16, order=">"))
        results = []
        for name in ("a.png", "b.tif"):
            for out in ("out.png", "out.tif"):
                self.succeed("convolve", name, out, "--kernel", "gaussian:5:1.1", "--mode", "same")
                self.succeed("convolve", out, "again.png", *COPY)
                results.append((self.folder / "again.png").read_bytes())
        self.assertEqual(len(set(results)), 1)

    def test_tags_are_kept_and_the_dropped_ones_are_said(self):
        profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        picture = Image.fromarray(self.random_image(8, 8, 3).astype("u1"))
        exif = Image.Exif()
        exif[0x112] = 6
        exif[0x10f] = "maker"
        for name in ("in.jpg", "in.png", "in.tif"):
            settings = {} if name.endswith("tif") else {"exif": exif}
            picture.save(self.folder / name, dpi=(300, 150), icc_profile=profile, **settings)
            for out in ("out.png", "out.tif"):
                said = self.succeed("convolve", name, out, *COPY)
                with Image.open(self.folder / out) as found:
                    self.assertEqual(found.info["icc_profile"], profile)
                    numpy.testing.assert_allclose([float(x) for x in found.info["dpi"]], (300, 150), rtol=1e-4)
                    self.assertEqual(found.getexif().get(0x112, 1), 6 if settings else 1)
                self.assertEqual("dropped: EXIF" in said, bool(settings))
        said = self.succeed("convolve", "in.jpg", "out.npy", *COPY)
        self.assertEqual(said, "orvane: out.npy: dropped: EXIF, resolution, orientation, colour profile\n")
        self.assertEqual(self.succeed("convolve", "in.jpg", "out.npy", *COPY, "--quiet"), "")

    def test_standard_input_and_output(self):
        image = self.random_image(30, 20, 3).astype("u1")
        self.write("in.png", image)
        tiled = tiff(image, tile=16, packed=True)
        for data, format in itertools.product(((self.folder / "in.png").read_bytes(), tiled), ("png", "tiff", "npy", None)):
            for out in ("-", "/dev/stdout"):
                options = ["--format", format] if format else []
                command = [TOOL, "convolve", "-", out, *COPY, *options]
                done = subprocess.run(command, input=data, stdout=subprocess.PIPE, check=True).stdout
                with open(self.folder / "redirected", "wb") as file:
                    subprocess.run(command, input=data, stdout=file, check=True)
                self.assertEqual((self.folder / "redirected").read_bytes(), done)
                if done[:2] == b"II":
                    found = read_tiff(done)[0][0]
                elif format == "npy":
                    found = numpy.load(io.BytesIO(done))
                else:
                    found = numpy.array(Image.open(io.BytesIO(done)))
                numpy.testing.assert_array_equal(found, image)

    def test_compression_changes_sizes_and_not_samples(self):
        image = numpy.cumsum(self.random.integers(-2, 3, (300, 200, 3)), 1).clip(-90, 90) + 100
        self.write("in.png", image)
        for name in ("png", "tif"):
            sizes = []
            for level in (0, 1, 2, 3, 6, 9):
                self.succeed("convolve", "in.png", f"out.{name}", *COPY, "--compression", level)
                numpy.testing.assert_array_equal(numpy.array(Image.open(self.folder / f"out.{name}")), image)
                sizes.append((self.folder / f"out.{name}").stat().st_size)
            self.assertGreater(sizes[0], 1.3 * sizes[1])
            self.assertGreater(sizes[1], sizes[-1])

    def test_damaged_tiff_and_jpeg(self):
        file = io.BytesIO()
        Image.fromarray(self.random_image(40, 30, 3).astype("u1")).save(file, "jpeg")
        whole = tiff(self.values("u2", (40, 30, 3)), packed=True)
        for data in (file.getvalue(), whole, tiff(self.values("f4", (20, 30, 3)), tile=16, big=True)):
            for length in range(16, len(data) - 2, len(data) // 20):
                (self.folder / "in").write_bytes(data[:length])
                done = self.run_tool("convolve", "in", "out.tif", *COPY)
                self.assertEqual(done.returncode, 2, length)
                self.assertRegex(done.stderr, r"\Aorvane: 'in' is damaged or truncated: [^\n]+\n\Z")
                self.assertFalse((self.folder / "out.tif").exists())
        for data, words in ((tiff(self.values("u1", (3, 4, 4)), photometric=5), "photometric interpretation 5"),
                            (tiff(self.values("u2", (3, 4, 1)), bits=12), "12 bits")):
            (self.folder / "in").write_bytes(data)
            self.assertIn(words, self.run_tool("convolve", "in", "out.tif", *COPY).stderr)


if __name__ == "__main__":
    unittest.main()
