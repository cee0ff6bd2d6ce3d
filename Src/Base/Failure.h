#pragma once

#include <QString>

namespace corv {

/// Why something could not be done: a kind for code that decides by it, and a sentence for people.
///
/// A failure is made where it happened, because only there the cause is known, and is handed up
/// unchanged to where a person is.
struct Failure
{
    enum class Kind {
        notFound,      ///< no file or folder of that name
        noPermission,  ///< the system refuses access
        notAFile,      ///< a folder, a device or another thing that is no regular file
        unreadable,    ///< reading failed in the middle: a card pulled out, a broken disk
        cutShort,      ///< the file ends too early
        notRecognised, ///< the contents are not of the kind that was expected
        damaged,       ///< of the expected kind, but broken inside
        tooLarge,      ///< above a limit of the program
        noMemory,      ///< memory that the system does not have
        noRoom,        ///< the disk is full
        notWritable,   ///< the target cannot be written
        notPossible,   ///< asked for something that does not fit the state, such as no open flight
        incomplete,    ///< done, but a part is missing; the sentence says which
        cancelled,     ///< the user or the end of the program stopped it
        other
    };

    Kind kind = Kind::other;

    /// One sentence or more, with a capital and a full stop: what happened, to what, and, where it
    /// helps, what to do. Plain text, never markup.
    QString sentence;
};

} // namespace corv
