#!/usr/bin/env node
// Writes the table of dates that the platform's are compared with: what Intl.DateTimeFormat makes of the same
// skeletons, languages, time zones and instants. Needs a Node that carries locale data of its own, as the
// official builds do; a distribution's may use the system's ICU, which is the one under test.
//
//     tests/platform/intl/make-table.mjs > tests/platform/intl/dates.tsv

const languages = [
    'en_US', 'de_DE.UTF-8', 'fr_FR', 'pt-BR', 'ru_RU', 'ja_JP', 'ko_KR', 'zh_CN', 'ar_EG', 'fa_IR', 'th_TH', 'hi_IN',
];
const zones = ['/usr/share/zoneinfo/Europe/Berlin', 'America/New_York', 'Asia/Kolkata', 'Pacific/Chatham'];
const instants = [
    '2026-10-14T08:09:30.123Z',  // the same day in Europe and Asia
    '2000-02-29T23:59:59.999Z',  // midnight in between
    '1969-07-20T20:17:40.000Z',  // before the epoch
].map(Date.parse);

const short = 'short', long = 'long', numeric = 'numeric', two = '2-digit';
// "numeric" minutes have two digits beside an hour all the same; two asked for would have Intl follow the letters of
// the hour closely, too.
const skeletons = {
    y: {year: numeric},
    d: {day: numeric},
    EEEE: {weekday: long},
    MMMM: {month: long},
    Md: {month: numeric, day: numeric},
    MMMd: {month: short, day: numeric},
    MMMMd: {month: long, day: numeric},
    yMd: {year: numeric, month: numeric, day: numeric},
    yyMMdd: {year: two, month: two, day: two},
    yMMM: {year: numeric, month: short},
    yMMMd: {year: numeric, month: short, day: numeric},
    yMMMEEEd: {year: numeric, month: short, weekday: short, day: numeric},
    yMMMMEEEEd: {year: numeric, month: long, weekday: long, day: numeric},
    GyMMMd: {era: short, year: numeric, month: short, day: numeric},
    jm: {hour: numeric, minute: numeric},
    Hm: {hour: numeric, minute: numeric, hourCycle: 'h23'},
    hm: {hour: numeric, minute: numeric, hourCycle: 'h12'},
    jms: {hour: numeric, minute: numeric, second: numeric},
    EEEjm: {weekday: short, hour: numeric, minute: numeric},
    MMMdjm: {month: short, day: numeric, hour: numeric, minute: numeric},
    jmz: {hour: numeric, minute: numeric, timeZoneName: short},
    yMMMMdzzzz: {year: numeric, month: long, day: numeric, timeZoneName: long},
};

const tag = (language) => language.replace(/\..*/, '').replace('_', '-');
const zoneId = (path) => path.replace(/.*\/zoneinfo\//, '');

if (/system/.test(process.config.variables.icu_gyp_path)) {
    console.error('this Node formats with the system\'s ICU, which is the one under test');
    process.exit(1);
}
const {node, icu, cldr, tz} = process.versions;
console.log('# Made by make-table.mjs: what Intl.DateTimeFormat makes of each skeleton\'s options.');
console.log(`# Node ${node}: ICU ${icu}, CLDR ${cldr}, time zones ${tz}`);
console.log('# language\ttime zone\tinstant\tskeleton\ttext');
for (const language of languages) {
    for (const [skeleton, options] of Object.entries(skeletons)) {
        for (const zone of zones) {
            const format = new Intl.DateTimeFormat(tag(language), {...options, timeZone: zoneId(zone)});
            for (const instant of instants) {
                console.log([language, zone, instant, skeleton, format.format(instant)].join('\t'));
            }
        }
    }
}
