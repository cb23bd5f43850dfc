# The headers that users of the library include: they are installed, and a test compiles each alone.

set(IMAGING_PUBLIC_HEADERS
  Imaging/Bounds.h
  Platform/Codecs/Codec.h
  Platform/Foundation/AffineTransform.h
  Platform/Foundation/AssertionHandler.h
  Platform/Foundation/Coder.h
  Platform/Foundation/Data.h
  Platform/Foundation/Error.h
  Platform/Foundation/Exception.h
  Platform/Foundation/Export.h
  Platform/Foundation/Geometry.h
  Platform/Foundation/KeyedArchiver.h
  Platform/Foundation/LocalizedString.h
  Platform/Foundation/Log.h
  Platform/Foundation/MainThread.h
  Platform/Foundation/PixelBuffer.h
  Platform/Foundation/URL.h
  Platform/Foundation/URLLoading.h
  Platform/Graphics/BezierPath.h
  Platform/Graphics/BitmapImageRep.h
  Platform/Graphics/Color.h
  Platform/Graphics/CoreGraphics.h
  Platform/Graphics/GraphicsContext.h
  Platform/Graphics/Image.h
)
