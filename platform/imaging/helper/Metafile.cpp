#include "platform/imaging/helper/Metafile.h"

#include <array>
#include <memory>

// The library's headers use the formats of the font library without including them.
#include <ft2build.h>
#include FT_FREETYPE_H

#include <libwmf/api.h>
#include <libwmf/gd.h>

#include "platform/imaging/helper/DrawnSize.h"

namespace vandrel {

namespace {

constexpr double dotsPerInch = 96;

struct DestroyApi {
    void operator()(wmfAPI *api) const { wmf_api_destroy(api); }
};
using Api = std::unique_ptr<wmfAPI, DestroyApi>;

wmfMapping mappingTo(const char *name, const char *file)
{
    // The library takes no constants but writes to none of them.
    return {const_cast<char *>(name), const_cast<char *>(file), FT_ENCODING_UNICODE};
}

Api openMetafile(QByteArray &file)
{
    // The fonts that the library has been told of by its makers are no longer where they were.
    static std::array mappings{mappingTo("Courier", "NimbusMonoPS-Regular.t1"),
                               mappingTo("Courier-Oblique", "NimbusMonoPS-Italic.t1"),
                               mappingTo("Courier-Bold", "NimbusMonoPS-Bold.t1"),
                               mappingTo("Courier-BoldOblique", "NimbusMonoPS-BoldItalic.t1"),
                               mappingTo("Helvetica", "NimbusSans-Regular.t1"),
                               mappingTo("Helvetica-Oblique", "NimbusSans-Italic.t1"),
                               mappingTo("Helvetica-Bold", "NimbusSans-Bold.t1"),
                               mappingTo("Helvetica-BoldOblique", "NimbusSans-BoldItalic.t1"),
                               mappingTo("Times-Roman", "NimbusRoman-Regular.t1"),
                               mappingTo("Times-Italic", "NimbusRoman-Italic.t1"),
                               mappingTo("Times-Bold", "NimbusRoman-Bold.t1"),
                               mappingTo("Times-BoldItalic", "NimbusRoman-BoldItalic.t1"),
                               mappingTo("Symbol", "StandardSymbolsPS.t1"),
                               wmfMapping{}};
    static char folder[] = "/usr/share/fonts/type1/urw-base35";
    static std::array<char *, 2> folders{folder, nullptr};
    wmfAPI_Options options{};
    options.function = wmf_gd_function;
    options.fontdirs = folders.data();
    options.font.ps = mappings.data();
    constexpr unsigned long flags = WMF_OPT_FUNCTION | WMF_OPT_FONTDIRS | WMF_OPT_FONTMAP
        | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
    wmfAPI *made = nullptr;
    const wmf_error_t failure = wmf_api_create(&made, flags, &options);
    Api api(made);
    if (failure != wmf_E_None
        || wmf_mem_open(api.get(), reinterpret_cast<unsigned char *>(file.data()),
                        static_cast<long>(file.size()))
            != wmf_E_None)
        return nullptr;
    return api;
}

/// The size in pixels; empty for a metafile without one.
QSize sizeOf(wmfAPI *api)
{
    unsigned width = 0;
    unsigned height = 0;
    if (wmf_display_size(api, &width, &height, dotsPerInch, dotsPerInch) != wmf_E_None)
        return {};
    return drawnSize(QSizeF(width, height));
}

} // namespace

QImage drawMetafile(QByteArray file)
{
    const Api api = openMetafile(file);
    wmfD_Rect bounds{};
    if (!api || wmf_scan(api.get(), 0, &bounds) != wmf_E_None)
        return {};
    const QSize size = sizeOf(api.get());
    if (size.isEmpty())
        return {};
    wmf_gd_t *canvas = WMF_GD_GetData(api.get());
    canvas->type = wmf_gd_image;
    canvas->bbox = bounds;
    canvas->width = static_cast<unsigned>(size.width());
    canvas->height = static_cast<unsigned>(size.height());
    const wmf_error_t failure = wmf_play(api.get(), 0, &bounds);
    if (failure != wmf_E_None || canvas->gd_image == nullptr)
        return {};
    const int *pixels = wmf_gd_image_pixels(canvas->gd_image);
    if (pixels == nullptr)
        return {};
    return QImage(reinterpret_cast<const uchar *>(pixels), size.width(), size.height(),
                  qsizetype{4} * size.width(), QImage::Format_RGB32)
        .copy();
}

} // namespace vandrel
