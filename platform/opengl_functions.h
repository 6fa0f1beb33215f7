#pragma once

#include <cstdint>

/// The part of OpenGL 1.1 that the editor draws with, which is the same on every system. It is declared here
/// and looked up by name, so that neither headers nor libraries of it are needed to build or to load ours.
namespace KAV::Platform {

/// The functions, under their names there. All of them work on the context that is current on their thread.
struct SOpenGL {
    void (*glBegin)(std::uint32_t mode);
    void (*glBindTexture)(std::uint32_t target, std::uint32_t texture);
    void (*glBlendFunc)(std::uint32_t source, std::uint32_t destination);
    void (*glClear)(std::uint32_t mask);
    void (*glClearColor)(float red, float green, float blue, float alpha);
    void (*glColor4f)(float red, float green, float blue, float alpha);
    void (*glColor4ub)(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t alpha);
    void (*glColorMask)(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t alpha);
    void (*glDeleteTextures)(std::int32_t count, const std::uint32_t* textures);
    void (*glDisable)(std::uint32_t capability);
    void (*glDrawArrays)(std::uint32_t mode, std::int32_t first, std::int32_t count);
    void (*glEnable)(std::uint32_t capability);
    void (*glEnd)();
    void (*glGenTextures)(std::int32_t count, std::uint32_t* textures);
    std::uint32_t (*glGetError)();
    void (*glGetIntegerv)(std::uint32_t name, std::int32_t* values);
    const unsigned char* (*glGetString)(unsigned int name);
    void (*glInterleavedArrays)(std::uint32_t format, std::int32_t stride, const void* vertices);
    void (*glLineWidth)(float width);
    void (*glLoadIdentity)();
    void (*glOrtho)(double left, double right, double bottom, double top, double nearest, double farthest);
    void (*glPopMatrix)();
    void (*glPushMatrix)();
    void (*glReadPixels)(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
        std::uint32_t format, std::uint32_t type, void* pixels);
    void (*glRotatef)(float degrees, float x, float y, float z);
    void (*glScalef)(float x, float y, float z);
    void (*glScissor)(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);
    void (*glTexImage2D)(std::uint32_t target, std::int32_t level, std::int32_t internalFormat,
        std::int32_t width, std::int32_t height, std::int32_t border, std::uint32_t format,
        std::uint32_t type, const void* pixels);
    void (*glTexParameteri)(std::uint32_t target, std::uint32_t name, std::int32_t value);
    void (*glTexSubImage2D)(std::uint32_t target, std::int32_t level, std::int32_t x, std::int32_t y,
        std::int32_t width, std::int32_t height, std::uint32_t format, std::uint32_t type,
        const void* pixels);
    void (*glTranslatef)(float x, float y, float z);
    void (*glVertex2f)(float x, float y);
    void (*glViewport)(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);
};

/// Finds all functions; `find` takes a name and a function to fill, and says whether there is one.
template<typename Find>
bool FindOpenGL(SOpenGL& gl, const Find& find) {
    return find("glBegin", gl.glBegin) && find("glBindTexture", gl.glBindTexture) &&
           find("glBlendFunc", gl.glBlendFunc) && find("glClear", gl.glClear) &&
           find("glClearColor", gl.glClearColor) && find("glColor4f", gl.glColor4f) &&
           find("glColor4ub", gl.glColor4ub) && find("glColorMask", gl.glColorMask) &&
           find("glDeleteTextures", gl.glDeleteTextures) && find("glDisable", gl.glDisable) &&
           find("glDrawArrays", gl.glDrawArrays) && find("glEnable", gl.glEnable) &&
           find("glEnd", gl.glEnd) && find("glGenTextures", gl.glGenTextures) &&
           find("glGetError", gl.glGetError) && find("glGetIntegerv", gl.glGetIntegerv) &&
           find("glGetString", gl.glGetString) && find("glInterleavedArrays", gl.glInterleavedArrays) &&
           find("glLineWidth", gl.glLineWidth) && find("glLoadIdentity", gl.glLoadIdentity) &&
           find("glOrtho", gl.glOrtho) && find("glPopMatrix", gl.glPopMatrix) &&
           find("glPushMatrix", gl.glPushMatrix) && find("glReadPixels", gl.glReadPixels) &&
           find("glRotatef", gl.glRotatef) && find("glScalef", gl.glScalef) &&
           find("glScissor", gl.glScissor) && find("glTexImage2D", gl.glTexImage2D) &&
           find("glTexParameteri", gl.glTexParameteri) && find("glTexSubImage2D", gl.glTexSubImage2D) &&
           find("glTranslatef", gl.glTranslatef) && find("glVertex2f", gl.glVertex2f) &&
           find("glViewport", gl.glViewport);
}

} // namespace KAV::Platform
