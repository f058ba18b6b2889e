#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/file_chooser.h"

namespace trovek {

/**
 * Asks to shorten the name of a machine file that is too long for the machine's display.
 *
 * A name of more than 30 characters that ends with "s3g" or "x3g" is cut before its suffix.
 */
class TROVEK_UI_EXPORT LengthValidator : public FileChooserValidator
{
public:
    /** Runs the event loop while it asks. */
    Result validate(const QString& path, QWidget* parent) override;
};

} // namespace trovek
