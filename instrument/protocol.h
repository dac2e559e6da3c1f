#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace instrument {

/// Bytes that leave in one write, `delay` after the chunk before them.
struct chunk
{
    QByteArray bytes;
    std::chrono::milliseconds delay{0};

    bool operator==(const chunk&) const = default;
};

/// How the instrument talks on one line: bytes in, bytes out. A protocol does
/// no input or output of its own and knows no clock, so that any transport can
/// carry it and a test can call it directly.
class protocol
{
public:
    protocol() = default;
    virtual ~protocol() = default;
    protocol(const protocol&) = delete;
    protocol& operator=(const protocol&) = delete;

    /// Takes what has arrived, in whatever pieces, and returns the answer,
    /// which is empty when the instrument has nothing to say yet.
    [[nodiscard]] virtual QList<chunk> receive(QByteArrayView bytes) = 0;
};

/// Several protocols on one line: each hears everything, and what they answer
/// leaves in their order.
class several_protocols final : public protocol
{
public:
    explicit several_protocols(std::vector<std::unique_ptr<protocol>> spoken)
        : m_spoken(std::move(spoken))
    {
    }

    [[nodiscard]] QList<chunk> receive(QByteArrayView bytes) override
    {
        QList<chunk> chunks;
        for (const auto& one : m_spoken)
            chunks += one->receive(bytes);
        return chunks;
    }

private:
    std::vector<std::unique_ptr<protocol>> m_spoken;
};

/// Makes the protocol of a line that has just been opened.
using protocol_factory = std::function<std::unique_ptr<protocol>()>;

} // namespace instrument
