#pragma once

#include "instrument/faults.h"
#include "instrument/measurement_text.h"
#include "instrument/memory.h"
#include "instrument/protocol.h"

#include <QByteArray>

namespace instrument {

/// The text protocol of older instruments: the command "~\r\n" is answered with the
/// whole memory, a record for each measurement, with a line end between two. An
/// empty memory, and everything else, meets silence.
///
/// Faults count the records from 1. Those that act on any frame act on a record.
class text_responder final : public protocol
{
public:
    /// `stored` must outlive the responder.
    explicit text_responder(const memory& stored, text_form form, fault_list faults = {});

    [[nodiscard]] QList<chunk> receive(QByteArrayView bytes) override;

private:
    [[nodiscard]] QList<chunk> all_records() const;

    const memory& m_stored;
    text_form m_form;
    fault_list m_faults;
    QByteArray m_buffer;
};

} // namespace instrument
