// Days and months as the calendar has them, without the clock of whoever reads.
const kDay = 86400000;
const kMonths = ["January", "February", "March", "April", "May", "June", "July", "August", "September", "October",
                 "November", "December"];
export const shortMonths = kMonths.map(name => name.slice(0, 3));

export const dayOf = iso => Math.round(Date.parse(`${iso.slice(0, 10)}T00:00:00Z`) / kDay);
const dateOf = day => new Date(day * kDay);
export const isoOf = day => dateOf(day).toISOString().slice(0, 10);

export function longDay(day) {
  const date = dateOf(day);
  return `${date.getUTCDate()} ${kMonths[date.getUTCMonth()]} ${date.getUTCFullYear()}`;
}

export const longPeriod = (first, last) => first === last ? longDay(first) : `${longDay(first)} to ${longDay(last)}`;

export const monthOfDay = day => dateOf(day).getUTCFullYear() * 12 + dateOf(day).getUTCMonth();
export const monthOf = iso => Number(iso.slice(0, 4)) * 12 + Number(iso.slice(5, 7)) - 1;
export const yearOfMonth = month => Math.floor(month / 12);
export const firstDayOf = month => Math.round(Date.UTC(yearOfMonth(month), month % 12, 1) / kDay);
export const longMonth = month => `${kMonths[month % 12]} ${yearOfMonth(month)}`;
export const isoMonth = month => `${yearOfMonth(month)}-${String(month % 12 + 1).padStart(2, "0")}`;
