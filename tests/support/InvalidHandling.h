#pragma once

#include "libvextrace/MessageBase.h"

/// Sets the framework's policy for undecodable bytes as long as it lives.
class InvalidHandling {
public:
    explicit InvalidHandling(invalidMsgHandling_t handling) : before(MessageBase::invalidHandling) {
        MessageBase::invalidHandling = handling;
    }
    ~InvalidHandling() { MessageBase::invalidHandling = before; }
    InvalidHandling(const InvalidHandling&) = delete;
    InvalidHandling(InvalidHandling&&) = delete;
    InvalidHandling& operator=(const InvalidHandling&) = delete;
    InvalidHandling& operator=(InvalidHandling&&) = delete;

private:
    const invalidMsgHandling_t before;
};
