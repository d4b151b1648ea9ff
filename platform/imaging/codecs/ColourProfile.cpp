#include "platform/imaging/codecs/ColourProfile.h"

#include <array>

#include <lcms2.h>

namespace vandrel {

namespace {

struct CloseProfile {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using ProfileHandle = std::unique_ptr<void, CloseProfile>;

cmsUInt32Number formatOf(ProfiledPixels pixels)
{
    switch (pixels) {
    case ProfiledPixels::Bgr:
        return TYPE_BGR_8;
    case ProfiledPixels::Gray:
        return TYPE_GRAY_8;
    case ProfiledPixels::Cmyk:
        return TYPE_CMYK_8;
    case ProfiledPixels::InvertedCmyk:
        return TYPE_CMYK_8_REV;
    }
    return TYPE_BGR_8;
}

bool fits(cmsHPROFILE profile, ProfiledPixels pixels)
{
    const cmsColorSpaceSignature space = cmsGetColorSpace(profile);
    if (pixels == ProfiledPixels::Bgr)
        return space == cmsSigRgbData;
    return pixels == ProfiledPixels::Gray ? space == cmsSigGrayData : space == cmsSigCmykData;
}

/// The usual colours' profile under one of its many names changes nothing but the last bits.
bool isUsual(cmsHPROFILE profile)
{
    std::array<char, 256> name{};
    cmsGetProfileInfoASCII(profile, cmsInfoDescription, cmsNoLanguage, cmsNoCountry, name.data(),
                           name.size());
    return QByteArrayView(name.data()).contains("sRGB");
}

} // namespace

std::unique_ptr<ColourProfile> ColourProfile::make(QByteArrayView profile, ProfiledPixels pixels)
{
    // What the library says of damaged profiles goes nowhere: those are passed over.
    cmsSetLogErrorHandler(nullptr);
    const ProfileHandle source(
        cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
    if (!source || !fits(source.get(), pixels) || isUsual(source.get()))
        return nullptr;
    ProfileHandle target;
    if (pixels == ProfiledPixels::Gray) {
        cmsToneCurve *curve = cmsBuildGamma(nullptr, 2.2);
        target.reset(cmsCreateGrayProfile(cmsD50_xyY(), curve));
        cmsFreeToneCurve(curve);
    } else {
        target.reset(cmsCreate_sRGBProfile());
    }
    if (!target)
        return nullptr;
    cmsHTRANSFORM transform
        = cmsCreateTransform(source.get(), formatOf(pixels), target.get(),
                             pixels == ProfiledPixels::Gray ? TYPE_GRAY_8 : TYPE_BGR_8, INTENT_PERCEPTUAL, 0);
    return transform ? std::unique_ptr<ColourProfile>(new ColourProfile(transform)) : nullptr;
}

ColourProfile::~ColourProfile()
{
    cmsDeleteTransform(m_transform);
}

void ColourProfile::apply(const std::uint8_t *from, int pixels, std::uint8_t *to) const
{
    cmsDoTransform(m_transform, from, to, static_cast<cmsUInt32Number>(pixels));
}

} // namespace vandrel
