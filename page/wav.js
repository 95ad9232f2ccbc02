// WAV files of 32-bit floats.

/** The bytes before the interleaved samples. @param {number} frames @param {number} rate Hz @param {number} channels */
export function wavHeader(frames, rate, channels) {
  const frameBytes = 4 * channels;
  const dataBytes = frames * frameBytes;
  const bytes = new DataView(new ArrayBuffer(58));
  let at = 0;
  /** @param {string} text */
  const put = (text) => [...text].forEach((c) => bytes.setUint8(at++, c.charCodeAt(0)));
  /** @param {number} value @param {2 | 4} size */
  const number = (value, size) => {
    if (size === 2) bytes.setUint16(at, value, true);
    else bytes.setUint32(at, value, true);
    at += size;
  };
  put('RIFF');
  number(50 + dataBytes, 4);
  put('WAVEfmt ');
  number(18, 4);
  number(3, 2); // IEEE float
  number(channels, 2);
  number(rate, 4);
  number(rate * frameBytes, 4);
  number(frameBytes, 2);
  number(32, 2);
  number(0, 2);
  put('fact');
  number(4, 4);
  number(frames, 4);
  put('data');
  number(dataBytes, 4);
  return bytes.buffer;
}

/**
 * The sample rate that a WAV or FLAC file states, in Hz; null for others. A decoder would convert to
 * its own rate without a word.
 * @param {ArrayBuffer} file
 */
export function statedRate(file) {
  const bytes = new DataView(file);
  /** @param {number} at @param {string} text */
  const has = (at, text) =>
    at + text.length <= file.byteLength &&
    [...text].every((c, i) => bytes.getUint8(at + i) === c.charCodeAt(0));
  if (has(0, 'fLaC') && file.byteLength >= 21) return bytes.getUint32(18) >>> 12 || null;
  if (!has(0, 'RIFF') || !has(8, 'WAVE')) return null;
  for (let at = 12; at + 16 <= file.byteLength;) {
    if (has(at, 'fmt ')) return bytes.getUint32(at + 12, true) || null;
    const length = bytes.getUint32(at + 4, true);
    at += 8 + length + (length % 2);
  }
  return null;
}
