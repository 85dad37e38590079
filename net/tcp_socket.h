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

// One TCP connection over IPv4, asynchronous: what is written is sent later, what has arrived is
// announced by an event. Handed out by a listener, or connected by Connect or Listen.
//
// States: closed, connecting or listening for its one peer, connected, ended by the peer or failed
// (until Error was raised), closed again. A closed one can be used anew; in the background it goes
// on sending what it holds, until all is out or nothing has moved for some seconds.
// Limits: PollLoop's bounds on memory; a connection over them fails with the system's "no buffer
// space" code. An orderly end by the peer is the "connection reset" code.
class TCPSocket : public SocketCore, public Readable, public Writeable {
 public:
  explicit TCPSocket(PollLoop& loop);
  ~TCPSocket() override;

  // Where to connect to (dotted IPv4), or what to listen on; set before Connect and Listen.
  std::string Address;
  std::int32_t Port = 0;
  std::optional<NetworkInterface> LocalInterface;

  // Both start, Connected or Error tells how it ended. Listen accepts one connection.
  virtual void Connect();
  virtual void Listen();

  // Ends the connection when what it holds is sent. No event follows.
  virtual void Close();
  virtual void Disconnect() { Close(); }

  // Serves this socket now instead of in the next pass, also from one of its own handlers.
  virtual void Poll();

  bool IsConnected() const { return myState == State::Connected; }
  // The peer's address, dotted; kept after the end of the connection.
  const std::string& RemoteAddress() const { return myPeer.address; }
  std::uint16_t RemotePort() const { return myPeer.port; }
  // Both, "ADDRESS:PORT": no other connection has the same.
  std::string PeerName() const { return myPeer.address + ':' + std::to_string(myPeer.port); }
  // The port that is bound while there is a descriptor, else 0.
  std::uint16_t LocalPort() const;

  // A number that grows with each connection that its listener hands out; 0 while not among the
  // listener's active ones.
  std::uint64_t HandOffNumber() const { return myHandOffNumber; }

  std::string Read(std::size_t count) override;
  virtual std::string ReadAll();
  // What has arrived and was not read yet, without reading it.
  virtual std::string Lookahead() const;
  // Drops what has arrived and was not read yet.
  virtual void Purge();
  bool IsEOF() const override;
  bool ReadError() const override { return LastErrorCode() != 0; }
  std::size_t BytesAvailable() const { return myInput.Size(); }

  // Does nothing unless connected. The bytes leave when the loop flushes.
  //
  // A connection that is over its bound before the write fails, with two exceptions: large messages
  // do not count, whose memory all receivers share, or a few of them would cut off peers who keep
  // up; and all that a handler of its own writes counts as one. A slice is not copied.
  void Write(std::string_view bytes) override;
  void Write(const Slice& slice);
  void Flush() final;
  bool WriteError() const override { return LastErrorCode() != 0; }
  std::size_t BytesLeftToSend() const { return myOutput.Size(); }
  // How its peer keeps up with what it is sent: much may wait for it, and of that some may have
  // moved lately or nothing for as long as a closed connection may stand still.
  enum class Reading { KeepsUp, IsBehind, IsStuck };
  Reading HowPeerReads(std::chrono::steady_clock::time_point now) const;
  // Ends the connection, with Error in the next pass, for want of memory or over its bound.
  void FailForMemory();
  // Bytes of memory that what has arrived takes.
  virtual std::size_t InputHeld() const { return myInput.Capacity(); }

 protected:
  // Events, beside those that every socket has.
  virtual void Event_SendProgress(std::size_t /*sent*/, std::size_t /*left*/) {}
  virtual void Event_Error() {}

  // While true, nothing more is read from the peer.
  virtual bool HoldsInput() const { return false; }
  // Asks for a pass if input was held and some is waiting.
  void ResumeInput();

  ByteQueue& Input() { return myInput; }
  // The peer has sent its last: Error comes in the next pass, and what is written is sent on.
  void EndByPeer();
  bool HasHungUp() const { return myIsHungUp; }
  // Whether it holds as many unsent bytes as a connection may.
  bool IsFull() const;
  // Lets go of what has arrived.
  virtual void DropInput() { myInput.Clear(); }
  // A class that hides the send events from its users saves the loop raising them.
  void SkipSendEvents() { myRaisesSendEvents = false; }
  // Bytes sent since the last SendProgress; without send events, since the connection began.
  std::size_t SentSinceProgress() const { return mySentSinceProgress; }

  void Advance() override;
  void RaiseSendProgress() override;
  void RaiseError() override;
  // Ends this connection, and not the program.
  void RunOutOfMemory() override;
  // Ends the sending side and closes.
  void Finish() final;

 private:
  friend class PollLoop;
  friend class ServerSocket;

  enum class State { Closed, Connecting, Listening, Connected, Ended, Failed, Draining };

  // Takes over an accepted connection and makes Connected pending. False when the loop cannot
  // watch the descriptor, which is closed then.
  bool TakeOver(const os::Accepted& accepted);
  void Begin(State state);
  int OpenToConnect();
  void AcceptPeer();
  void FinishConnecting();
  void Receive();
  bool MaySend() const;
  // Whether so many bytes may be added to the output now. Fails where it is over its bound.
  bool MayWrite(std::size_t bytes);
  // Sees to what was added, which may not all have found room.
  void NoteWritten(bool hadRoom);
  // A peer that has no room for a long time may be gone, or just not reading.
  void WatchFullPeer();
  void LookAtFullPeer();
  void FailToSend(int error);
  void NoteSent(std::size_t count);
  // The same where no other chance may come, also if the system took no more lately.
  void FlushFinally();
  void Fail(int error);
  void Drain();
  void CheckDrain(std::size_t leftBefore);
  void EndConnection();
  void ForgetLastConnection();

  State myState = State::Closed;
  bool myRaisesSendEvents = true;
  bool myAwaitsFlush = false;
  bool myAwaitsWritable = false;
  bool myIsPeerWatched = false;
  bool myToleratesFullPeer = false;
  int mySendError = 0;
  os::Endpoint myPeer;
  ByteQueue myInput;
  OutputQueue myOutput;
  std::size_t mySentSinceProgress = 0;
  std::chrono::steady_clock::time_point myLastMoved;  // when the system took some, and not all
  std::weak_ptr<ServerSocket> myListener;
  std::uint64_t myHandOffNumber = 0;
};

}  // namespace corvane
