#include "gl_program.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QFile>

#include <stdexcept>

namespace pathscope {

namespace {

constexpr char kLogUnit[] = "platform\\pathscope\\gl_program";

QByteArray sourceOf(const QStringList& files)
{
    QByteArray source("#version 330 core\n");
    for (const QString& name : files) {
        QFile file(QStringLiteral(":/pathscope/shaders/") + name);
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error("No shader " + trovek::toStdString(name));
        source += file.readAll();
    }
    return source;
}

} // namespace

std::unique_ptr<QOpenGLShaderProgram> buildProgram(const QStringList& vertex,
                                                   const QStringList& fragment)
{
    auto program = std::make_unique<QOpenGLShaderProgram>();
    const bool built =
        program->addShaderFromSourceCode(QOpenGLShader::Vertex, sourceOf(vertex)) &&
        program->addShaderFromSourceCode(QOpenGLShader::Fragment, sourceOf(fragment)) &&
        program->link();
    if (!built)
        throw std::runtime_error(trovek::toStdString(program->log().trimmed()));
    return program;
}

void checkGl([[maybe_unused]] QOpenGLFunctions_3_3_Core& gl, [[maybe_unused]] const char* where)
{
#ifndef NDEBUG
    // A lost context may answer with errors for ever.
    for (int i = 0; i < 8; ++i) {
        const GLenum error = gl.glGetError();
        if (error == GL_NO_ERROR)
            return;
        TROVEK_LOG(0) << "OpenGL error " << error << " in " << where << std::endl;
    }
#endif
}

} // namespace pathscope
