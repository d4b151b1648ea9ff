"""The peers of the picture engine, their libraries called directly: neither the start of a program nor its arguments count.

    apt-get install graphicsmagick imagemagick libvips-tools
"""

import ctypes
import time

NAMES = {"vips": "libvips", "gm": "GraphicsMagick", "im": "ImageMagick"}


def best_time(work, runs):
    """Milliseconds; an operation that takes seconds is not done again."""
    best, started = float("inf"), time.monotonic()
    for _ in range(runs):
        begin = time.perf_counter()
        work()
        best = min(best, time.perf_counter() - begin)
        if time.monotonic() - started > 4:
            break
    return best * 1000


class Vips:
    """libvips through its C interface, which computes when asked for pixels; it writes its results into memory."""

    def __init__(self, picture):
        self.library = ctypes.CDLL("libvips.so.42")
        self.library.vips_error_buffer.restype = ctypes.c_char_p
        for maker in ("vips_image_new_from_file", "vips_image_new_memory", "vips_image_new_matrix_from_array",
                      "vips_image_copy_memory", "vips_image_new_from_image"):
            getattr(self.library, maker).restype = ctypes.c_void_p
        self.check(self.library.vips_init(b"bench"))
        # Else an operation done again would not be.
        self.library.vips_cache_set_max(0)
        loaded = ctypes.c_void_p(self.library.vips_image_new_from_file(picture.encode(), None))
        self.source = ctypes.c_void_p(self.library.vips_image_copy_memory(loaded))
        self.width = self.library.vips_image_get_width(self.source)
        self.height = self.library.vips_image_get_height(self.source)

    def check(self, failed):
        if failed:
            raise RuntimeError(self.library.vips_error_buffer().decode())

    def call(self, name, image, *arguments):
        result = ctypes.c_void_p()
        self.check(getattr(self.library, name)(image, ctypes.byref(result), *arguments, None))
        return result

    def drop(self, *images):
        for image in images:
            self.library.g_object_unref(image)

    def compute(self, lazy):
        target = ctypes.c_void_p(self.library.vips_image_new_memory())
        self.check(self.library.vips_image_write(lazy, target))
        self.drop(target, lazy)


class Magick:
    """What the two have in common: a wand that holds the picture. Each operation works on a copy of the wand, which shares
    the pixels until they change."""

    def __init__(self, name, picture):
        self.library = ctypes.CDLL(name)
        for maker in ("NewMagickWand", "CloneMagickWand", "NewPixelWand"):
            getattr(self.library, maker).restype = ctypes.c_void_p
        self.wand = ctypes.c_void_p(self.library.NewMagickWand())
        self.check(self.library.MagickReadImage(self.wand, picture.encode()))
        self.width = self.library.MagickGetImageWidth(self.wand)
        self.height = self.library.MagickGetImageHeight(self.wand)
        self.white = ctypes.c_void_p(self.library.NewPixelWand())
        self.gray = ctypes.c_void_p(self.library.NewPixelWand())
        self.library.PixelSetColor(self.gray, b"rgb(60,60,60)")

    def check(self, done):
        if not done:
            raise RuntimeError("refused")

    def on_copy(self, *steps):
        def work():
            wand = ctypes.c_void_p(self.library.CloneMagickWand(self.wand))
            for name, *arguments in steps:
                self.check(getattr(self.library, name)(wand, *arguments))
            self.library.DestroyMagickWand(wand)
        return work


class GraphicsMagick(Magick):
    def __init__(self, picture):
        ctypes.CDLL("libGraphicsMagick-Q16.so.3", mode=ctypes.RTLD_GLOBAL).InitializeMagick(None)
        super().__init__("libGraphicsMagickWand-Q16.so.2", picture)


class ImageMagick(Magick):
    def __init__(self, picture):
        ctypes.CDLL("libMagickWand-6.Q16.so.6").MagickWandGenesis()
        super().__init__("libMagickWand-6.Q16.so.6", picture)
