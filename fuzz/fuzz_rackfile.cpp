// Loads arbitrary bytes as a simulator rack file. A refused file leaves the rack as it was and
// says why; a loaded rack writes a file that loads back into the same rack.
#include "fuzzsupport.h"
#include "rackfile.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    fuzz::startApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));

    SimRack rack;
    const QByteArray before = RackFile::write(rack);
    QString error;
    if (!RackFile::parse(bytes, rack, &error)) {
        fuzz::check(!error.trimmed().isEmpty(), "a refusal without words");
        fuzz::check(RackFile::write(rack) == before, "a refused file changed the rack",
                    error.toUtf8());
        return 0;
    }

    const QByteArray written = RackFile::write(rack);
    SimRack copy;
    QString copyError;
    fuzz::check(RackFile::parse(written, copy, &copyError), "a written rack file is refused",
                copyError.toUtf8() + "\n" + written);
    fuzz::check(RackFile::write(copy) == written, "a rack changed on its way through a file",
                written + "---\n" + RackFile::write(copy));

    // The loaded rack answers its own directory without tripping over what the file put in it.
    for (int slot = 0; slot <= 16; ++slot) {
        rack.answer(QStringLiteral("G00"));
        rack.answer(QStringLiteral("I41"));
        rack.answer(QStringLiteral("D%1").arg(slot));
        rack.answer(QStringLiteral("I04"));
        rack.answer(QStringLiteral("I40"));
    }
    return 0;
}
