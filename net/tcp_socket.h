#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "buffers/byte_queue.h"
#include "buffers/output_queue.h"
#include "net/socket_core.h"
#include "net/streams.h"
#include "platform/network_interfaces.h"

namespace corvane {

class ServerSocket;

// One TCP connection over IPv4: a stream of bytes. A listener hands it an accepted connection, or
// Connect or Listen opens one. Written bytes leave when the loop flushes; arrived bytes wait to be
// read. Owns its descriptor, input and output; borrows the loop. Made with std::make_shared.
//
// States: closed -> connecting, or listening for one peer -> connected -> ended by the peer, or
// failed -> closed. Connect and Listen start over from any state. A socket that is closed with
// output left drains: it keeps itself alive and goes on sending until all is out, nothing has moved
// for Limits::drain, or Connect, Listen or Close is called again.
//
// Events come from the loop's passes, in the order of SocketCore, and never from inside a call but
// Poll. Error comes once, and the socket is closed when its handler returns; a Close of our own
// raises no event. LastErrorCode is then the system's code: "connection reset" also for an orderly
// end by the peer, "no buffer space" for a connection over a limit.
//
// Limits: ConnectionMemory::Limits. Output goes on to a peer that has ended its sending.
class TCPSocket : public SocketCore, public Readable, public Writeable {
 public:
  explicit TCPSocket(PollLoop& loop);
  ~TCPSocket() override;

  // The peer's address (dotted IPv4) and port, or the port to listen on, and the interface to use.
  // Set before Connect and Listen.
  std::string Address;
  std::int32_t Port = 0;
  std::optional<NetworkInterface> LocalInterface;

  // Both start an attempt; Connected or Error reports how it ended. Listen accepts one connection.
  virtual void Connect();
  virtual void Listen();

  // Ends the connection; written bytes are still sent. Harmless on a closed socket.
  virtual void Close();
  virtual void Disconnect() { Close(); }

  // Serves this socket now instead of in the next pass, also from one of its own handlers.
  virtual void Poll();

  bool IsConnected() const { return myState == State::Connected; }
  // The peer's address, or that of a proxy's client; kept after the end of the connection.
  const std::string& RemoteAddress() const { return myPeer.address; }
  // "ADDRESS:PORT" of the peer, "[ADDRESS]:PORT" for IPv6. Unique among connections, except that
  // those through different proxies may share it.
  std::string PeerName() const;
  // Grows with each connection that its listener hands off; 0 while it is not among the listener's
  // active ones.
  std::uint64_t HandOffNumber() const { return myHandOffNumber; }

  std::string Read(std::size_t count) override;
  virtual std::string ReadAll();
  // The unread input, which stays unread.
  virtual std::string Lookahead() const;
  // Drops the unread input.
  virtual void Purge();
  bool IsEOF() const override;
  bool ReadError() const override { return LastErrorCode() != 0; }
  // Bytes of memory that unread input takes.
  virtual std::size_t InputHeld() const { return myInput.Capacity(); }

  // Queues the bytes; SharedBytes are not copied. Does nothing unless connected.
  //
  // Fails the connection if there is no memory, or if it already holds Limits::connectionOutput
  // unsent bytes. Messages of OutputQueue::kLarge and more do not count: all receivers share their
  // memory, and a few of them would cut off peers that keep up. Inside the socket's own handlers
  // the limit does not apply, so all answers to one message are sent.
  void Write(std::string_view bytes) override;
  void Write(const SharedBytes& slice);
  // Sends as much as the system takes; the rest follows when the peer has room. The loop calls it.
  void Flush() final;
  bool WriteError() const override { return LastErrorCode() != 0; }
  std::size_t BytesLeftToSend() const { return myOutput.Size(); }
  // KeepsUp: less than a sixteenth of Limits::connectionOutput is left to send. IsBehind: more.
  // IsStuck: more, and the peer has taken nothing for Limits::drain.
  enum class Reading { KeepsUp, IsBehind, IsStuck };
  Reading HowPeerReads(std::chrono::steady_clock::time_point now) const;

  // Drops input and output and fails the connection with "no buffer space".
  void FailForMemory();

 protected:
  // Events, beside those that every socket has.
  virtual void Event_SendProgress(std::size_t /*sent*/, std::size_t /*left*/) {}
  virtual void Event_Error() {}

  // For a class that cuts messages out of the stream.
  ByteQueue& Input() { return myInput; }
  // While true, nothing more is read from the peer; call ResumeInput when it becomes false.
  virtual bool HoldsInput() const { return false; }
  void ResumeInput();
  // Ends the connection as the peer's orderly end does: written bytes are still sent.
  void EndByPeer();
  // Whether the peer has ended its sending or the connection, and its input is not all read yet.
  bool HasHungUp() const { return myIsHungUp; }
  // Whether it holds Limits::connectionOutput unsent bytes.
  bool IsFull() const;
  // Raises no SendComplete and SendProgress from now on, which saves their passes.
  void SkipSendEvents() { myRaisesSendEvents = false; }
  // Bytes sent since the last SendProgress; without send events, since the connection began.
  std::size_t SentSinceProgress() const { return mySentSinceProgress; }

  void Advance() override;
  void RaiseSendProgress() override;
  void RaiseError() override;
  void RunOutOfMemory() override;
  void Finish() final;

 private:
  friend class PollLoop;
  friend class ServerSocket;

  enum class State { Closed, Connecting, Listening, Connected, Ended, Failed, Draining };

  // Opening.
  void Begin(State state);
  int OpenToConnect();
  void FinishConnecting();
  void AcceptPeer();
  // Takes over an accepted connection and makes Connected pending. False when the loop cannot
  // watch the descriptor, which is closed then.
  bool TakeOver(const os::Accepted& accepted);
  void ForgetLastConnection();

  void Receive();

  // Sending.
  bool MaySend() const;
  // Whether so many bytes may be written now. Fails a connection over its limit.
  bool MayWrite(std::size_t bytes);
  void NoteWritten(bool hadRoom);
  void NoteSent(std::size_t count);
  // Flushes for the last time, even if the peer had no room a moment ago.
  void FlushFinally();
  void FailToSend(int error);
  // Check every Limits::lookAtFullPeer whether a peer that has no room is gone or just not reading.
  void WatchFullPeer();
  void LookAtFullPeer();

  // Ending.
  void Fail(int error);
  void Drain();
  // Every Limits::drain: ends a drain that made no progress.
  void CheckDrain(std::size_t leftBefore);
  void EndConnection();

  State myState = State::Closed;
  bool myRaisesSendEvents = true;
  bool myAwaitsFlush = false;        // on the loop's list
  bool myAwaitsWritable = false;     // the peer has no room
  bool myIsPeerWatched = false;      // a look at the full peer is due
  bool myToleratesFullPeer = false;  // the system was asked to
  int mySendError = 0;               // of a send; reading goes on to find the connection's end
  os::Endpoint myPeer;
  ByteQueue myInput;
  OutputQueue myOutput;
  std::size_t mySentSinceProgress = 0;
  std::chrono::steady_clock::time_point myLastMoved;  // when the system took some, and not all
  std::weak_ptr<ServerSocket> myListener;             // that handed it off, while active
  std::uint64_t myHandOffNumber = 0;
};

}  // namespace corvane
