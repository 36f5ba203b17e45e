// The failures of sockets that the bus has words for, apart from the platform's numbers.
#pragma once

enum class SocketError {
    None,
    Interrupted,
    Access,
    Fault,
    Invalid,
    WouldBlock,
    InProgress,
    NotSocket,
    MessageSize,
    NotSupported,
    NetDown,
    NetReset,
    Aborted,
    Reset,
    NoBuffers,
    NotConnected,
    ShutDown,
    TimedOut,
    HostUnreachable,
    NotInitialised,
    AddressInUse,
    Refused,
    Other,
};

// By meaning, from the platform's error number; 0 is None.
SocketError socket_ErrorOf(int number);
// What a failed write, and a failed connect, say. One that has no words of its own gets the general ones.
const char* socket_WriteText(SocketError error);
const char* socket_ConnectText(SocketError error);
