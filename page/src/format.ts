// SPDX-License-Identifier: MIT
// Numbers and times for people.

const US_PER_MINUTE = 60e6;

// Minutes, seconds and milliseconds, as the tool shows lap times.
export function lapClock(time_us: number): string {
  const ms = Math.round(Math.abs(time_us) / 1000);
  const minutes = Math.floor((ms * 1000) / US_PER_MINUTE);
  const seconds = ((ms % 60000) / 1000).toFixed(3).padStart(6, "0");
  return `${time_us < 0 ? "-" : ""}${minutes}:${seconds}`;
}

export function seconds(time_us: number): string {
  return (time_us * 1e-6).toFixed(3);
}

export function signedSeconds(time_us: number): string {
  return (time_us >= 0 ? "+" : "−") + seconds(Math.abs(time_us));
}

// As many decimals as two places of a range apart by a five-hundredth need.
export function coarse(value: number, range: number): string {
  const decimals = range > 0 ? Math.min(9, Math.max(0, Math.ceil(Math.log10(500 / range)))) : 3;
  return value.toFixed(decimals);
}

// Comma-separated values, RFC 4180.
export function csv(rows: (string | number)[][]): string {
  const field = (value: string | number): string => {
    const text = String(value);
    return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
  };
  return rows.map((row) => row.map(field).join(",") + "\r\n").join("");
}
