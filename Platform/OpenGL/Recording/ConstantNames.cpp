// The words of the enumerants, one table for each type.

#include "Platform/OpenGL/Recording/ConstantNames.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace Imaging::Platform::OpenGL {

namespace {

template<typename Value>
struct Word {
    Value value;
    const char* word;
};

template<typename Value>
std::string hexadecimal(Value value) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%04X", static_cast<unsigned>(value));
    return text.data();
}

template<typename Value, std::size_t Count>
std::string wordFor(const Word<Value> (&words)[Count], Value value) {
    for (const Word<Value>& word : words) {
        if (word.value == value) return word.word;
    }
    return hexadecimal(value);
}

template<typename Bits, std::size_t Count>
std::string wordsFor(const Word<Bits> (&words)[Count], Bits bits) {
    auto rest = static_cast<unsigned>(bits);
    std::string text;
    const auto append = [&](const std::string& word) { text += (text.empty() ? "" : " | ") + word; };
    for (const Word<Bits>& word : words) {
        if ((rest & static_cast<unsigned>(word.value)) == 0) continue;
        rest &= ~static_cast<unsigned>(word.value);
        append(word.word);
    }
    if (rest != 0 || text.empty()) append(hexadecimal(rest));
    return text;
}

constexpr Word<Primitive> primitives[] = {{Primitive::Lines, "GL_LINES"},
                                          {Primitive::LineLoop, "GL_LINE_LOOP"},
                                          {Primitive::Polygon, "GL_POLYGON"}};

constexpr Word<Capability> capabilities[] = {
    {Capability::LineSmooth, "GL_LINE_SMOOTH"}, {Capability::CullFace, "GL_CULL_FACE"},
    {Capability::DepthTest, "GL_DEPTH_TEST"},   {Capability::Blend, "GL_BLEND"},
    {Capability::Texture2D, "GL_TEXTURE_2D"},   {Capability::TextureRectangle, "GL_TEXTURE_RECTANGLE_EXT"}};

constexpr Word<MatrixMode> matrixModes[] = {{MatrixMode::ModelView, "GL_MODELVIEW"},
                                            {MatrixMode::Projection, "GL_PROJECTION"}};

constexpr Word<AttribBits> attribBits[] = {
    {AttribBits::Current, "GL_CURRENT_BIT"},          {AttribBits::Line, "GL_LINE_BIT"},
    {AttribBits::Polygon, "GL_POLYGON_BIT"},          {AttribBits::Lighting, "GL_LIGHTING_BIT"},
    {AttribBits::DepthBuffer, "GL_DEPTH_BUFFER_BIT"}, {AttribBits::Viewport, "GL_VIEWPORT_BIT"},
    {AttribBits::Transform, "GL_TRANSFORM_BIT"},      {AttribBits::Enable, "GL_ENABLE_BIT"},
    {AttribBits::ColorBuffer, "GL_COLOR_BUFFER_BIT"}, {AttribBits::Hint, "GL_HINT_BIT"},
    {AttribBits::Texture, "GL_TEXTURE_BIT"}};

constexpr Word<ClearBits> clearBits[] = {{ClearBits::Depth, "GL_DEPTH_BUFFER_BIT"},
                                         {ClearBits::Color, "GL_COLOR_BUFFER_BIT"}};

constexpr Word<BlendFactor> blendFactors[] = {{BlendFactor::Zero, "GL_ZERO"},
                                              {BlendFactor::One, "GL_ONE"},
                                              {BlendFactor::SrcAlpha, "GL_SRC_ALPHA"},
                                              {BlendFactor::OneMinusSrcAlpha, "GL_ONE_MINUS_SRC_ALPHA"},
                                              {BlendFactor::DstAlpha, "GL_DST_ALPHA"},
                                              {BlendFactor::OneMinusDstAlpha, "GL_ONE_MINUS_DST_ALPHA"},
                                              {BlendFactor::ConstantAlpha, "GL_CONSTANT_ALPHA"}};

constexpr Word<CullFaceMode> cullFaceModes[] = {{CullFaceMode::Front, "GL_FRONT"},
                                                {CullFaceMode::Back, "GL_BACK"}};

constexpr Word<HintTarget> hintTargets[] = {{HintTarget::PointSmooth, "GL_POINT_SMOOTH_HINT"},
                                            {HintTarget::LineSmooth, "GL_LINE_SMOOTH_HINT"},
                                            {HintTarget::PolygonSmooth, "GL_POLYGON_SMOOTH_HINT"}};

constexpr Word<HintMode> hintModes[] = {
    {HintMode::DontCare, "GL_DONT_CARE"}, {HintMode::Fastest, "GL_FASTEST"}, {HintMode::Nicest, "GL_NICEST"}};

constexpr Word<TexEnvMode> texEnvModes[] = {{TexEnvMode::Replace, "GL_REPLACE"},
                                            {TexEnvMode::Modulate, "GL_MODULATE"}};

constexpr Word<TexParameter> texParameters[] = {
    {TexParameter::MagFilter, "GL_TEXTURE_MAG_FILTER"},
    {TexParameter::MinFilter, "GL_TEXTURE_MIN_FILTER"},
    {TexParameter::WrapS, "GL_TEXTURE_WRAP_S"},
    {TexParameter::WrapT, "GL_TEXTURE_WRAP_T"},
    {TexParameter::StorageHintApple, "GL_TEXTURE_STORAGE_HINT_APPLE"}};

constexpr Word<TexParameterValue> texParameterValues[] = {
    {TexParameterValue::Nearest, "GL_NEAREST"},
    {TexParameterValue::Linear, "GL_LINEAR"},
    {TexParameterValue::ClampToEdge, "GL_CLAMP_TO_EDGE"},
    {TexParameterValue::StorageCachedApple, "GL_STORAGE_CACHED_APPLE"}};

constexpr Word<PixelStore> pixelStores[] = {
    {PixelStore::UnpackRowLength, "GL_UNPACK_ROW_LENGTH"},
    {PixelStore::UnpackAlignment, "GL_UNPACK_ALIGNMENT"},
    {PixelStore::PackRowLength, "GL_PACK_ROW_LENGTH"},
    {PixelStore::PackAlignment, "GL_PACK_ALIGNMENT"},
    {PixelStore::UnpackClientStorageApple, "GL_UNPACK_CLIENT_STORAGE_APPLE"}};

constexpr Word<PixelFormat> pixelFormats[] = {{PixelFormat::Rgba, "GL_RGBA"}, {PixelFormat::Bgra, "GL_BGRA"}};

constexpr Word<PixelType> pixelTypes[] = {{PixelType::UnsignedByte, "GL_UNSIGNED_BYTE"},
                                          {PixelType::UnsignedInt8888, "GL_UNSIGNED_INT_8_8_8_8"},
                                          {PixelType::UnsignedInt8888Rev, "GL_UNSIGNED_INT_8_8_8_8_REV"}};

constexpr Word<StringName> stringNames[] = {{StringName::Vendor, "GL_VENDOR"},
                                            {StringName::Renderer, "GL_RENDERER"},
                                            {StringName::Version, "GL_VERSION"},
                                            {StringName::Extensions, "GL_EXTENSIONS"}};

constexpr Word<Error> errors[] = {{Error::None, "GL_NO_ERROR"},
                                  {Error::InvalidEnum, "GL_INVALID_ENUM"},
                                  {Error::InvalidValue, "GL_INVALID_VALUE"},
                                  {Error::InvalidOperation, "GL_INVALID_OPERATION"},
                                  {Error::StackOverflow, "GL_STACK_OVERFLOW"},
                                  {Error::StackUnderflow, "GL_STACK_UNDERFLOW"},
                                  {Error::OutOfMemory, "GL_OUT_OF_MEMORY"},
                                  {Error::InvalidFramebufferOperation, "GL_INVALID_FRAMEBUFFER_OPERATION"},
                                  {Error::ContextLost, "GL_CONTEXT_LOST"}};

} // namespace

std::string nameOf(Primitive value) { return wordFor(primitives, value); }
std::string nameOf(Capability value) { return wordFor(capabilities, value); }
std::string nameOf(TextureTarget value) { return nameOf(capabilityOf(value)); }
std::string nameOf(MatrixMode value) { return wordFor(matrixModes, value); }
std::string nameOf(AttribBits value) { return wordsFor(attribBits, value); }
std::string nameOf(ClearBits value) { return wordsFor(clearBits, value); }
std::string nameOf(BlendFactor value) { return wordFor(blendFactors, value); }
std::string nameOf(CullFaceMode value) { return wordFor(cullFaceModes, value); }
std::string nameOf(HintTarget value) { return wordFor(hintTargets, value); }
std::string nameOf(HintMode value) { return wordFor(hintModes, value); }
std::string nameOf(TexEnvMode value) { return wordFor(texEnvModes, value); }
std::string nameOf(TexParameter value) { return wordFor(texParameters, value); }
std::string nameOf(TexParameterValue value) { return wordFor(texParameterValues, value); }
std::string nameOf(PixelStore value) { return wordFor(pixelStores, value); }
std::string nameOf(PixelFormat value) { return wordFor(pixelFormats, value); }
std::string nameOf(PixelType value) { return wordFor(pixelTypes, value); }
std::string nameOf(StringName value) { return wordFor(stringNames, value); }
std::string nameOf(Error value) { return wordFor(errors, value); }

} // namespace Imaging::Platform::OpenGL
