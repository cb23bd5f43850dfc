#pragma once

/// The enumerants of OpenGL that the library uses, as types of their own, so that a command takes only those
/// that mean something to it. Values are OpenGL's; a cast to `unsigned` gives what OpenGL's own functions
/// take.
namespace Imaging::Platform::OpenGL {

/// What `begin` draws. A polygon is the fan of its vertices in their order, also where it is not convex.
enum class Primitive : unsigned { Lines = 0x0001, LineLoop = 0x0002, Polygon = 0x0009 };

/// What is switched with `enable` and `disable`. All are off in a fresh context.
enum class Capability : unsigned {
    LineSmooth = 0x0B20,
    CullFace = 0x0B44,
    DepthTest = 0x0B71,
    Blend = 0x0BE2,
    Texture2D = 0x0DE1,
    TextureRectangle = 0x84F5, ///< wins over Texture2D where both are on
};

/// Where textures are bound. Rectangle textures have one level and coordinates in pixels.
enum class TextureTarget : unsigned { Texture2D = 0x0DE1, Rectangle = 0x84F5 };

/// The capability that lets textures of a target be drawn.
constexpr Capability capabilityOf(TextureTarget target) { return static_cast<Capability>(target); }

enum class MatrixMode : unsigned { ModelView = 0x1700, Projection = 0x1701 };

/// Groups of state that `pushAttrib` keeps, to be joined with |.
enum class AttribBits : unsigned {
    Current = 0x0001,     ///< colour and texture coordinate
    Line = 0x0004,        ///< line width and smoothing
    Polygon = 0x0008,     ///< culling
    Lighting = 0x0040,    ///< nothing that these commands could change
    DepthBuffer = 0x0100, ///< the depth test
    Viewport = 0x0800,    ///< the viewport
    Transform = 0x1000,   ///< the matrix mode
    Enable = 0x2000,      ///< every capability
    ColorBuffer = 0x4000, ///< blending and the clear colour
    Hint = 0x8000,        ///< the hints
    Texture = 0x40000,    ///< texture capabilities, bindings and the texture environment
};
constexpr AttribBits operator|(AttribBits a, AttribBits b) {
    return static_cast<AttribBits>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
/// Whether the set has any of the bits.
constexpr bool contains(AttribBits set, AttribBits bits) {
    return (static_cast<unsigned>(set) & static_cast<unsigned>(bits)) != 0;
}

/// What `clear` clears, to be joined with |.
enum class ClearBits : unsigned { Depth = 0x0100, Color = 0x4000 };
constexpr ClearBits operator|(ClearBits a, ClearBits b) {
    return static_cast<ClearBits>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

enum class BlendFactor : unsigned {
    Zero = 0,
    One = 1,
    SrcAlpha = 0x0302,
    OneMinusSrcAlpha = 0x0303,
    DstAlpha = 0x0304,
    OneMinusDstAlpha = 0x0305,
    ConstantAlpha = 0x8003,
};

enum class CullFaceMode : unsigned { Front = 0x0404, Back = 0x0405 };

enum class HintTarget : unsigned { PointSmooth = 0x0C51, LineSmooth = 0x0C52, PolygonSmooth = 0x0C53 };
enum class HintMode : unsigned { DontCare = 0x1100, Fastest = 0x1101, Nicest = 0x1102 };

/// How a texture's colour meets the current one: multiplied with it, or instead of it.
enum class TexEnvMode : unsigned { Replace = 0x1E01, Modulate = 0x2100 };

enum class TexParameter : unsigned {
    MagFilter = 0x2800,
    MinFilter = 0x2801,
    WrapS = 0x2802,
    WrapT = 0x2803,
    StorageHintApple = 0x85BC, ///< only where the facts say client storage
};
enum class TexParameterValue : unsigned {
    Nearest = 0x2600,
    Linear = 0x2601,
    ClampToEdge = 0x812F,
    StorageCachedApple = 0x85BE, ///< only where the facts say client storage
};

/// How pixels in memory are read and written. Row lengths are in pixels, 0 for rows without padding;
/// alignments are 1, 2, 4 or 8 bytes.
enum class PixelStore : unsigned {
    UnpackRowLength = 0x0CF2,
    UnpackAlignment = 0x0CF5,
    PackRowLength = 0x0D02,
    PackAlignment = 0x0D05,
    UnpackClientStorageApple = 0x85B2, ///< only where the facts say client storage
};

/// The order of samples, together with PixelType, which says how four of them lie in memory: bytes in that
/// order, or one native 32-bit word with the first sample in its highest (UnsignedInt8888) or lowest byte
/// (UnsignedInt8888Rev). On little-endian machines Bgra with UnsignedInt8888 is alpha, red, green, blue in
/// bytes.
enum class PixelFormat : unsigned { Rgba = 0x1908, Bgra = 0x80E1 };
enum class PixelType : unsigned {
    UnsignedByte = 0x1401,
    UnsignedInt8888 = 0x8035,
    UnsignedInt8888Rev = 0x8367,
};

enum class StringName : unsigned {
    Vendor = 0x1F00,
    Renderer = 0x1F01,
    Version = 0x1F02,
    Extensions = 0x1F03
};

/// What `getError` answers.
enum class Error : unsigned {
    None = 0,
    InvalidEnum = 0x0500,
    InvalidValue = 0x0501,
    InvalidOperation = 0x0502,
    StackOverflow = 0x0503,
    StackUnderflow = 0x0504,
    OutOfMemory = 0x0505,
    InvalidFramebufferOperation = 0x0506,
    ContextLost = 0x0507,
};

} // namespace Imaging::Platform::OpenGL
