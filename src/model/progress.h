// SPDX-License-Identifier: MIT
// How a reader tells its caller how far it is, and asks whether it may go on.
#pragma once

namespace traguardo {

class IProgress {
 public:
  virtual ~IProgress() = default;
  // The first two slots belong to callers of older interfaces; no reader calls them.
  virtual void Riservato1() {}
  virtual void Riservato2() {}
  // Begins reporting, from 0 to `maximum`. `*stop` becomes true if the work is not to begin at all. Gives a handle.
  virtual int Apri(bool* stop, int maximum, int step) = 0;
  // Ends what `handle` reports; result is 1 for success, 0 otherwise.
  virtual void Chiudi(int handle, int result) = 0;
  // Called from every frame and every tag, so it must be cheap. False asks the reader to stop.
  virtual bool Avanza(int handle, int percent) = 0;
};

}  // namespace traguardo
