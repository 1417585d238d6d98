// SPDX-License-Identifier: MIT
// The blocks of numbers in the page: base64 of a deflated row of variable-length integers.

// Rows of integers end in these where a value is none that can be counted.
export const NOT_A_NUMBER = -0x80000000;
export const MINUS_INFINITY = NOT_A_NUMBER + 1;
export const INFINITY = NOT_A_NUMBER + 2;
export const FIRST_NUMBER = NOT_A_NUMBER + 3;

async function unpacked(block: number): Promise<Uint8Array> {
  const text = document.getElementById(`b${block}`)?.textContent;
  if (text === undefined) throw new Error("The page is cut short: samples are missing.");
  const packed = Uint8Array.from(atob(text), (c) => c.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("deflate-raw"));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

class Reader {
  private at = 0;
  constructor(private readonly bytes: Uint8Array) {}

  // Up to 2^53, beyond which doubles step over integers.
  unsigned(): number {
    let value = 0;
    let scale = 1;
    for (;;) {
      const byte = this.bytes[this.at++] ?? 0;
      if (byte < 0x80) return value + byte * scale;
      value += (byte - 0x80) * scale;
      scale *= 0x80;
    }
  }

  signed(): number {
    const value = this.unsigned();
    return value % 2 === 0 ? value / 2 : -(value + 1) / 2;
  }
}

// Times: what each step differs from the step before.
export async function readTimes(block: number, count: number): Promise<Float64Array> {
  const reader = new Reader(await unpacked(block));
  const times = new Float64Array(count);
  let time = 0;
  let step = 0;
  for (let i = 0; i < count; i++) {
    step += reader.signed();
    time += step;
    times[i] = time;
  }
  return times;
}

// Values: the difference to the last number plus one, or 0 and what stands in a number's place.
export async function readValues(block: number, count: number): Promise<Int32Array> {
  return readRow(new Reader(await unpacked(block)), count, "steps");
}

// Two rows of one block: minima as values are, then how far above each its maximum is.
export async function readExtremes(block: number, count: number): Promise<{ min: Int32Array; max: Int32Array }> {
  const reader = new Reader(await unpacked(block));
  const min = readRow(reader, count, "steps");
  const max = readRow(reader, count, "differences");
  for (let i = 0; i < count; i++) max[i] = min[i] < FIRST_NUMBER ? min[i] : min[i] + max[i];
  return { min, max };
}

function readRow(reader: Reader, count: number, of: "steps" | "differences"): Int32Array {
  const values = new Int32Array(count);
  let last = 0;
  for (let i = 0; i < count; i++) {
    const word = reader.unsigned();
    if (word === 0) {
      values[i] = NOT_A_NUMBER + reader.unsigned();
      continue;
    }
    const step = word % 2 === 1 ? (word - 1) / 2 : -word / 2;
    values[i] = of === "steps" ? last + step : step;
    if (of === "steps") last += step;
  }
  return values;
}
