// Reads images with a parser that the Kaitai Struct compiler makes of the library's own description of the format, and
// compares every stored number and text with what the library reads.
//
//   node interop.js DESCRIPTION STORED-VALUES FOLDER IMAGE...
//
// DESCRIPTION is what 'datablock describe --ksy' writes, STORED-VALUES the program of that name, FOLDER takes the
// generated parser. Closes with a line 'N passed, N failed'.
'use strict';

const {execFileSync} = require('child_process');
const fs = require('fs');
const path = require('path');
const compiler = require('kaitai-struct-compiler');
const KaitaiStream = require('kaitai-struct/KaitaiStream');
const yaml = require('yaml');

// The languages that the description must serve, the one that is run here first.
const languages = ['javascript', 'cpp_stl', 'csharp', 'java', 'python'];

// The JavaScript runtime reads 64-bit integers as doubles, and some negative ones wrong; Latin-1 is Windows-1252 to
// it. Both are the runtime's, not the description's.
KaitaiStream.prototype.readU8le = function () {
    return Buffer.from(this.readBytes(8)).readBigUInt64LE();
};
KaitaiStream.prototype.readS8le = function () {
    return Buffer.from(this.readBytes(8)).readBigInt64LE();
};
KaitaiStream.bytesToStr = (bytes) => Buffer.from(bytes).toString('latin1');

const camelCase = (id) => id.replace(/_([a-z0-9])/g, (_, letter) => letter.toUpperCase());

// The double that the ten bytes of the extended format come nearest to.
function extended({significand, signAndExponent}) {
    const exponent = signAndExponent & 0x7fff;
    const integerBit = 1n << 63n;
    let value = NaN;
    if (exponent === 0x7fff && significand === integerBit) {
        value = Infinity;
    } else if (exponent === 0 || (exponent !== 0x7fff && (significand & integerBit) !== 0n)) {
        let power = Math.max(exponent, 1) - 16383 - 63;
        value = Number(significand);
        for (; power > 1000 && value !== 0 && value !== Infinity; power -= 1000) value *= 2 ** 1000;
        for (; power < -1000 && value !== 0; power += 1000) value *= 2 ** -1000;
        value *= value === 0 || value === Infinity ? 1 : 2 ** power;
    }
    return signAndExponent & 0x8000 ? -value : value;
}

// A value as the library's program writes it.
function written(value) {
    if (typeof value === 'string') return 't' + Buffer.from(value, 'latin1').toString('hex');
    if (typeof value === 'bigint') return value.toString();
    if (typeof value === 'object') return written(extended(value));
    if (Number.isNaN(value)) return 'nan';
    const bytes = Buffer.alloc(8);
    bytes.writeDoubleBE(value);
    return bytes.toString('hex');
}

// The values of an object by the names of its attributes: those of arrays and of inner types in their order.
function collect(type, object, fields) {
    const add = (attribute, value) => {
        const inner = (type.types || {})[attribute.type];
        if (Array.isArray(value)) value.forEach((element) => add(attribute, element));
        else if (inner) collect(inner, value, fields);
        else (fields[attribute.id] ||= []).push(written(value));
    };
    for (const attribute of type.seq) add(attribute, object[camelCase(attribute.id)]);
    for (const id of Object.keys(type.instances || {})) add({id}, object[camelCase(id)]);
    return fields;
}

// The same of a table that describes itself: a field for all values where the columns have one type, else one a column.
function collectTable(table) {
    const fields = {};
    const one = (element) => (element.value ? [written(element.value.value)] : []);
    for (const name of ['checksum32', 'update_index', 'rows', 'columns', 'row_id_type', 'column_id_type'])
        fields[name] = [written(table[camelCase(name)])];
    fields.column_types = table.columnTypes.map(written);
    fields.row_ids = (table.rowIds || []).flatMap(one);
    fields.column_ids = (table.columnIds || []).flatMap(one);
    if (table.columnTypes.every((type) => type === table.columnTypes[0])) {
        fields.values = table.values.flatMap((row) => row.values.flatMap(one));
    } else {
        table.columnTypes.forEach((_, column) => {
            fields[`column_${column}`] = table.values.flatMap((row) => one(row.values[column]));
        });
    }
    return fields;
}

// What the library reads: a list of blocks, each with its fields.
function libraryBlocks(program, image) {
    const blocks = [];
    const text = execFileSync(program, [image], {encoding: 'latin1', maxBuffer: 1 << 30});
    for (const line of text.split('\n').filter(Boolean)) {
        const [word, ...rest] = line.split(' ');
        if (word === 'block') {
            const [offset, id, kind, length] = rest;
            blocks.push({offset: +offset, id: +id, kind, length: +length, fields: {}});
        } else {
            blocks.at(-1).fields[rest[0]] = rest.slice(1);
        }
    }
    return blocks;
}

const sums = {blocks: 0, numbers: 0, texts: 0, 'missing behind the end of a block': 0, differences: 0};

function difference(text) {
    ++sums.differences;
    if (sums.differences <= 20) console.log(`DIFFERENT ${text}`);
}

// What a block is too short to hold, the library reads as zero; such a parser does not have it.
function compareFields(where, expected, got, isShort) {
    for (const [name, values] of Object.entries(expected)) {
        const others = got[name] || [];
        if (others.length > values.length || (others.length < values.length && !isShort))
            difference(`${where}.${name}: ${values.length} values here, ${others.length} there`);
        values.forEach((value, i) => {
            ++sums[value.startsWith('t') ? 'texts' : 'numbers'];
            if (i >= others.length) ++sums['missing behind the end of a block'];
            const other = i < others.length ? others[i] : value.startsWith('t') ? 't' : written(0);
            if (value !== other) difference(`${where}.${name}[${i}]: ${value} here, ${other} there`);
        });
    }
}

function compareImage(description, Parser, program, image) {
    const before = sums.differences;
    const blocks = libraryBlocks(program, image);
    const parsed = new Parser(new KaitaiStream(fs.readFileSync(image))).blocks || [];
    if (blocks.length !== parsed.length) difference(`${image}: ${blocks.length} blocks here, ${parsed.length} there`);
    let offset = 0;
    blocks.slice(0, parsed.length).forEach((block, i) => {
        const other = parsed[i];
        const where = `${path.basename(image)} ${block.offset}: ${block.id}`;
        ++sums.blocks;
        if (other.id !== block.id || offset !== block.offset) difference(`${where}: ${other.id} at ${offset} there`);
        offset += other.isEnd ? 4 : other.size;
        if (block.kind === 'none') return;
        const type = description.types[description.types.block.instances.body.type.cases[block.id]];
        try {
            const fields = block.kind === 'table' ? collectTable(other.table) : collect(type, other.body, {});
            const size = Number(/(\d+) bytes in all/.exec((type || {}).doc || '')?.[1] || 0);
            compareFields(where, block.fields, fields, block.length < size);
        } catch (error) {
            difference(`${where}: ${error.message}`);
        }
    });
    return sums.differences === before;
}

async function main([file, program, folder, ...images]) {
    const description = yaml.parse(fs.readFileSync(file, 'utf8'));
    let passed = 0;
    let failed = 0;
    const check = (holds, text) => {
        holds ? ++passed : ++failed;
        if (!holds) console.log(`FAILED ${text}`);
    };
    let Parser;
    for (const language of languages) {
        try {
            const sources = await compiler.compile(language, description, null, false);
            check(Object.keys(sources).length > 0, language);
            if (language !== 'javascript') continue;
            const source = path.resolve(folder, Object.keys(sources)[0]);
            fs.writeFileSync(source, Object.values(sources)[0]);
            Parser = Object.values(require(source))[0];
        } catch (error) {
            check(false, `${language}: ${String(error).slice(0, 500)}`);
        }
    }
    if (Parser) {
        for (const image of images) {
            try {
                check(compareImage(description, Parser, program, image), image);
            } catch (error) {
                check(false, `${image}: ${error.stack}`);
            }
        }
    }
    const counts = Object.entries(sums).map(([what, count]) => `${count} ${what}`);
    console.log(`${images.length} images, ${counts.join(', ')}`);
    console.log(`${passed} passed, ${failed} failed`);
    process.exitCode = failed === 0 && images.length > 0 && Parser ? 0 : 1;
}

main(process.argv.slice(2));
