#include "platform/picture_image.h"

#include "common/windows/unlimited_path.h"

#include "platform/windows/com_session.h"
#include "platform/windows/handles.h"
#include "platform/windows/picture_image.h"

#include <wincodec.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace rotika {

namespace {

using Bytes = std::vector<unsigned char>;

/// Only from a file on a disk: reading a device or a pipe could block forever.
std::optional<Bytes> readImageFile(const std::u16string& path) {
    constexpr DWORD anySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    // The server of a pipe must not be able to impersonate the user.
    constexpr DWORD flags = FILE_FLAG_SEQUENTIAL_SCAN | SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS;
    const KernelHandle file = fileHandle(CreateFileW(unlimitedPath(wideText(path)).c_str(), GENERIC_READ,
                                                     anySharing, nullptr, OPEN_EXISTING, flags, nullptr));
    LARGE_INTEGER size{};
    if (!file || GetFileType(file.get()) != FILE_TYPE_DISK || GetFileSizeEx(file.get(), &size) == 0 ||
        size.QuadPart <= 0 || static_cast<std::uint64_t>(size.QuadPart) > largestImageBytes) {
        return std::nullopt;
    }
    Bytes bytes(static_cast<std::size_t>(size.QuadPart));
    DWORD count = 0;
    if (ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) == 0) {
        return std::nullopt;
    }
    bytes.resize(count);
    return bytes;
}

bool isGoodSize(std::uint32_t width, std::uint32_t height) {
    constexpr auto largest = static_cast<std::uint32_t>(largestImageSidePx);
    return width >= 1 && height >= 1 && width <= largest && height <= largest;
}

bool isOfGoodSize(IWICBitmapSource& image) {
    UINT width = 0;
    UINT height = 0;
    return SUCCEEDED(image.GetSize(&width, &height)) && isGoodSize(width, height);
}

/// A decoder may decode everything on opening, as Wine's does, so the size of a PNG is checked before.
bool mayBeOpened(const Bytes& bytes) {
    constexpr unsigned char pngStart[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    constexpr std::size_t widthAt = 16;
    constexpr std::size_t heightAt = 20;
    const bool isPng =
        bytes.size() >= heightAt + 4 && std::ranges::equal(pngStart, std::span(bytes).first<8>());
    const auto numberAt = [&](std::size_t place) {
        std::uint32_t number = 0;
        for (const unsigned char byte : std::span(bytes).subspan(place, 4)) {
            number = number << 8U | byte;
        }
        return number;
    };
    return !isPng || isGoodSize(numberAt(widthAt), numberAt(heightAt));
}

/// The first image of the file, not decoded yet; empty if the file has none or it is too large.
ComPointer<IWICBitmapFrameDecode> openFrame(IWICImagingFactory& factory, Bytes& bytes) {
    ComPointer<IWICStream> stream;
    ComPointer<IWICBitmapDecoder> decoder;
    ComPointer<IWICBitmapFrameDecode> frame;
    if (FAILED(factory.CreateStream(stream.slot())) ||
        FAILED(stream->InitializeFromMemory(bytes.data(), static_cast<DWORD>(bytes.size()))) ||
        FAILED(factory.CreateDecoderFromStream(stream.get(), nullptr, WICDecodeMetadataCacheOnDemand,
                                               decoder.slot())) ||
        FAILED(decoder->GetFrame(0, frame.slot())) || !isOfGoodSize(*frame.get())) {
        return {};
    }
    return frame;
}

/// Premultiplied before scaling, or transparent pixels would tint their neighbours.
ComPointer<IWICBitmapScaler> scaled(IWICImagingFactory& factory, IWICBitmapSource& image, UINT sidePx) {
    ComPointer<IWICFormatConverter> converter;
    ComPointer<IWICBitmapScaler> scaler;
    if (FAILED(factory.CreateFormatConverter(converter.slot())) ||
        FAILED(converter->Initialize(&image, GUID_WICPixelFormat32bppPBGRA, WICBitmapDitherTypeNone, nullptr,
                                     0, WICBitmapPaletteTypeCustom)) ||
        FAILED(factory.CreateBitmapScaler(scaler.slot())) ||
        FAILED(scaler->Initialize(converter.get(), sidePx, sidePx, WICBitmapInterpolationModeFant))) {
        return {};
    }
    return scaler;
}

/// Null if the data are corrupt.
Gdiplus::GpBitmap* decoded(IWICBitmapSource& image, INT sidePx) {
    Gdiplus::GpBitmap* bitmap = nullptr;
    gdip::GdipCreateBitmapFromScan0(sidePx, sidePx, 0, PixelFormat32bppPARGB, nullptr, &bitmap);
    ImageHandle owned(bitmap);
    const Gdiplus::Rect all(0, 0, sidePx, sidePx);
    Gdiplus::BitmapData locked;
    if (bitmap == nullptr || gdip::GdipBitmapLockBits(bitmap, &all, Gdiplus::ImageLockModeWrite,
                                                      PixelFormat32bppPARGB, &locked) != Gdiplus::Ok) {
        return nullptr;
    }
    const auto stride = static_cast<UINT>(locked.Stride);
    const HRESULT result = image.CopyPixels(nullptr, stride, stride * static_cast<UINT>(sidePx),
                                            static_cast<BYTE*>(locked.Scan0));
    gdip::GdipBitmapUnlockBits(bitmap, &locked);
    if (FAILED(result)) {
        return nullptr;
    }
    static_cast<void>(owned.release());
    return bitmap;
}

} // namespace

const PictureImage* loadPictureImage(const std::u16string& path, std::int32_t sidePx) {
    std::optional<Bytes> bytes = readImageFile(path);
    if (!bytes || !mayBeOpened(*bytes)) {
        return nullptr;
    }
    const ComSession session;
    ComPointer<IWICImagingFactory> factory;
    if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IWICImagingFactory, reinterpret_cast<void**>(factory.slot())))) {
        return nullptr;
    }
    const auto frame = openFrame(*factory.get(), *bytes);
    const auto scaler = frame ? scaled(*factory.get(), *frame.get(), static_cast<UINT>(sidePx))
                              : ComPointer<IWICBitmapScaler>();
    Gdiplus::GpBitmap* const pixels = scaler ? decoded(*scaler.get(), sidePx) : nullptr;
    return pixels == nullptr ? nullptr : new PictureImage{pixels};
}

} // namespace rotika
