// The attributes as data: how a value is read from text, written as text, and laid on the way of a
// knob. The list itself comes from the build.

/**
 * @typedef {object} Attribute
 * @property {string} name
 * @property {string} label
 * @property {string} description
 * @property {string} category empty: none
 * @property {'number' | 'toggle' | 'choice' | 'list'} kind
 * @property {number[]} default one value, of a list two
 * @property {number} low
 * @property {number} high
 * @property {string} unit "dB", "s", "Hz", "degrees" or empty
 * @property {string[]} choices names of a choice's values, by index
 */

/** The units that a value may be written in, as powers of ten of the attribute's own. */
const units = {
  s: { s: 0, ms: -3 },
  Hz: { Hz: 0, kHz: 3 },
  dB: { dB: 0 },
  degrees: { degrees: 0, deg: 0, '°': 0 },
  '': { '%': -2 },
};

/** What is wrong with a text that was to be a value. */
export class BadText extends Error {}

/** @param {Attribute} attribute */
const range = ({ low, high, unit }) => `${low} to ${high}${unit && ' ' + unit}`;

/** What an attribute takes, in words. @param {Attribute} attribute */
export function domainText(attribute) {
  if (attribute.kind === 'toggle') return 'on or off';
  if (attribute.kind === 'choice') return attribute.choices.join(', ');
  return range(attribute);
}

/**
 * One number with or without a unit, within the range. Throws BadText.
 * @param {Attribute} attribute @param {string} text
 */
export function readNumber(attribute, text) {
  const match = /^\s*([-+]?(?:\d+\.?\d*|\.\d+))(?:e([-+]?\d+))?\s*(\S*)\s*$/i.exec(
    text.replace('−', '-').replace(',', '.'),
  );
  if (!match) throw new BadText(`${attribute.name}: “${text}” is not a number`);
  const known = /** @type {Record<string, Record<string, number>>} */ (units)[attribute.unit];
  const unit = Object.keys(known).find((u) => u.toLowerCase() === match[3].toLowerCase());
  if (match[3] !== '' && unit === undefined)
    throw new BadText(
      `${attribute.name}: expected ${Object.keys(known).join(' or ')}, not “${match[3]}”`,
    );
  // Moves the decimal point, which a multiplication would miss by a rounding.
  const power = Number(match[2] ?? 0) + (unit === undefined ? 0 : known[unit]);
  const value = Number(`${match[1]}e${power}`);
  if (!(value >= attribute.low && value <= attribute.high))
    throw new BadText(`${attribute.name}: ${text.trim()} is not within ${range(attribute)}`);
  return value;
}

/**
 * All values of an attribute from the words that readers of presets take. Throws BadText.
 * @param {Attribute} attribute @param {string[]} words
 */
export function readValues(attribute, words) {
  const wanted = attribute.default.length;
  if (words.length < 1 || words.length > wanted)
    throw new BadText(`${attribute.name}: expected ${wanted === 1 ? 'one value' : 'two values'}`);
  if (attribute.kind === 'toggle') {
    const word = words[0].toLowerCase();
    if (['on', '1', 'yes', 'true'].includes(word)) return [1];
    if (['off', '0', 'no', 'false'].includes(word)) return [0];
    throw new BadText(`${attribute.name}: expected on or off, not “${words[0]}”`);
  }
  if (attribute.kind === 'choice') {
    const index = attribute.choices.findIndex(
      (name, i) => name.toLowerCase() === words[0].toLowerCase() || String(i) === words[0],
    );
    if (index < 0)
      throw new BadText(
        `${attribute.name}: expected one of ${attribute.choices.join(', ')}, not “${words[0]}”`,
      );
    return [index];
  }
  const values = words.map((word) => readNumber(attribute, word));
  while (values.length < wanted) values.push(values[0]);
  return values;
}

/** As presets have them: a number without its unit, or a name. @param {Attribute} attribute @param {number[]} values */
export function wordsOf(attribute, values) {
  if (attribute.kind === 'toggle') return [values[0] ? 'on' : 'off'];
  if (attribute.kind === 'choice') return [attribute.choices[values[0]]];
  return values.map(String);
}

/** For people: with the unit, short times in ms. @param {Attribute} attribute @param {number} value */
export function textOf(attribute, value) {
  if (attribute.kind === 'toggle' || attribute.kind === 'choice')
    return wordsOf(attribute, [value])[0];
  /** @param {number} x */
  const short = (x) => String(Number(x.toPrecision(12)));
  if (attribute.unit === 's' && value < 1) return `${short(value * 1000)} ms`;
  const unit = attribute.unit === 'degrees' ? '°' : attribute.unit && ' ' + attribute.unit;
  return short(value) + unit;
}

/** Times and frequencies over more than a decade. @param {Attribute} attribute */
const isLogarithmic = ({ low, high }) => low > 0 && high / low > 10;

/** 0 to 1 along a knob. @param {Attribute} attribute @param {number} value */
export function positionOf(attribute, value) {
  const { low, high } = attribute;
  return isLogarithmic(attribute)
    ? Math.log(value / low) / Math.log(high / low)
    : (value - low) / (high - low);
}

/** The value at a position, rounded to what a hand can set. @param {Attribute} attribute @param {number} position */
export function valueAt(attribute, position) {
  const { low, high } = attribute;
  const p = Math.min(Math.max(position, 0), 1);
  if (p === 0) return low;
  if (p === 1) return high;
  const value = isLogarithmic(attribute)
    ? Number((low * (high / low) ** p).toPrecision(3))
    : round(low + (high - low) * p, (high - low) / 1000);
  return Math.min(Math.max(value, low), high);
}

/** To a decimal step of at most the given size. @param {number} value @param {number} step */
function round(value, step) {
  return Number(value.toFixed(Math.max(0, Math.ceil(-Math.log10(step)))));
}
