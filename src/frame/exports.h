/* The door of libtessarmont: flat C functions with upper-case names.
 *
 * Every argument is passed by reference and there are no return values. Integers are int32, reals are IEEE
 * single. Arrays are the caller's, filled from element 1, first index running fastest; the library never
 * checks their size. N is NumMarkers as the caller passes it, P = N(N-1)/2 the number of pairs, in the order
 * (2,1), (3,1), (3,2), (4,1), ...
 *
 * A file name is a length and as many characters; trailing blanks are cut, nothing is added. Project files
 * that are wrong are told in the log of the module ("MAP.log", ... in the current directory) and by Status =
 * 100, and then no out-array has been touched; on success Status is left alone, so set it to 0 before the
 * call. A file that cannot be opened or written, or memory that cannot be had, ends the process with one line
 * on standard error. Calls are not re-entrant: one thread at a time.
 */
#ifndef TESSARMONT_EXPORTS_H
#define TESSARMONT_EXPORTS_H

#include <stdint.h>

#if defined(_WIN32)
#define TESSARMONT_EXPORT __declspec(dllexport)
#else
#define TESSARMONT_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define TESSARMONT_NOEXCEPT noexcept
extern "C" {
#else
#define TESSARMONT_NOEXCEPT
#endif

/* Pre-reads: the number of markers that a project file declares, which the caller allocates for.
 *   NumMarkers  out  int32  written as read, even when it is refused
 *   Status      out  int32  100 when the header is wrong, else untouched
 * BINFINDNUMMARKERS takes the rule set of its readers (ModuleCode) as first argument. */
TESSARMONT_EXPORT void MAPFINDNUMMARKERS(const int32_t* NameLength, const char* FileName, int32_t* NumMarkers,
                                         int32_t* Status) TESSARMONT_NOEXCEPT;
TESSARMONT_EXPORT void PLMFINDNUMMARKERS(const int32_t* NameLength, const char* FileName, int32_t* NumMarkers,
                                         int32_t* Status) TESSARMONT_NOEXCEPT;
TESSARMONT_EXPORT void CDMFINDNUMMARKERS(const int32_t* NameLength, const char* FileName, int32_t* NumMarkers,
                                         int32_t* Status) TESSARMONT_NOEXCEPT;
TESSARMONT_EXPORT void BINFINDNUMMARKERS(const int32_t* ModuleCode, const int32_t* NameLength,
                                         const char* FileName, int32_t* NumMarkers,
                                         int32_t* Status) TESSARMONT_NOEXCEPT;

/* Plain checks: a project file of a mapping engine is read up to its block of method parameters and told good
 * or bad; nothing is handed back. CHECKERRORSDL sets Status to 0 on entry. */
/* bi-parental population: mapping or simulation */
TESSARMONT_EXPORT void CHECKERRORBIP(const int32_t* NameLength, const char* FileName,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;
/* clonal F1 and double cross, with traits */
TESSARMONT_EXPORT void CHECKERRORCDQ(const int32_t* NameLength, const char* FileName,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;
/* closed set of lines: mapping or simulation */
TESSARMONT_EXPORT void CHECKERRORCSL(const int32_t* NameLength, const char* FileName,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;
/* bi-parental population in several environments */
TESSARMONT_EXPORT void CHECKERRORMET(const int32_t* NameLength, const char* FileName,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;
/* nested families */
TESSARMONT_EXPORT void CHECKERRORNAM(const int32_t* NameLength, const char* FileName,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;
/* four and eight parents, with traits */
TESSARMONT_EXPORT void CHECKERRORPLQ(const int32_t* NameLength, const char* FileName,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;
/* segregation distortion */
TESSARMONT_EXPORT void CHECKERRORSDL(const int32_t* NameLength, const char* FileName,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;

/* Pre-reads of genomic-selection files. Status is -1 on failure; reports go to "fort.100" in the current
 * directory. Counts are written as read, even when a later section fails.
 *
 *   NumTraits               int32          out of the first; in of the second, from the first
 *   TraitNames              out  int32[19*NumTraits]  character c of trait t at element (c-1)*NumTraits + t
 *   BreedingPopulationSize  out  int32 */
TESSARMONT_EXPORT void GSFINDNUMTRAITS(const int32_t* NameLength, const char* FileName, int32_t* NumTraits,
                                       int32_t* Status) TESSARMONT_NOEXCEPT;
TESSARMONT_EXPORT void GSFINDTRAITNAMEBPS(const int32_t* NameLength, const char* FileName,
                                          const int32_t* NumTraits, int32_t* TraitNames,
                                          int32_t* BreedingPopulationSize,
                                          int32_t* Status) TESSARMONT_NOEXCEPT;

/* CMPFINDNUMMARKERS: reads a file of several maps whole and hands out its counts.
 *
 *   MarkerSpaceType, MarkerSpaceUnit  out  int32, as read
 *   NumChromosomes  out  int32  number of maps
 *   NumMarkers      out  int32  sum over all maps: at least as many as the union has */
TESSARMONT_EXPORT void CMPFINDNUMMARKERS(const int32_t* NameLength, const char* FileName,
                                         int32_t* MarkerSpaceType, int32_t* MarkerSpaceUnit,
                                         int32_t* NumChromosomes, int32_t* NumMarkers,
                                         int32_t* Status) TESSARMONT_NOEXCEPT;

/* CHECKERRORCMP: unites several maps of one organism and orders the union as one consensus map.
 *   NumChromosomes  in   int32            C, maps
 *   NumMarkers      in   int32            N, from CMPFINDNUMMARKERS. The tables hold the union of n markers: rows
 *                                         behind it are not touched; where N is below n, the first N are handed out
 *   Names           out  int32[35*N]      character c of marker m at element (c-1)*N + m
 *   AnchorInfo      out  int32[N]         how many maps have the marker; above 1 it is an anchor of the order
 *   Order           out  int32[N*(C+1)]   column 0 the consensus order, column m the place on map m, 0 for none
 *   Position        out  real32[N*(C+1)]  column 0 cumulative along the order, column m on map m, -1 for none
 *   Distance        out  real32[P]        mean distance over the maps that have both, 1000 where none has
 * The order is also written as two tables to the default file of unit 100, "fort.100", which stays connected. */
TESSARMONT_EXPORT void CHECKERRORCMP(const int32_t* NameLength, const char* FileName,
                                     const int32_t* NumChromosomes, const int32_t* NumMarkers, int32_t* Names,
                                     int32_t* AnchorInfo, int32_t* Order, float* Position, float* Distance,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;

/* CMPBYANCHORORDER: the ordering of CHECKERRORCMP alone.
 *   n           in   int32
 *   AnchorInfo  in   int32[n]   above 1 for an anchor
 *   dist        in   real32[P]  pair distances
 *   order       out  int32[n]
 * Writes its two tables to "fort.100" as CHECKERRORCMP does. */
TESSARMONT_EXPORT void CMPBYANCHORORDER(const int32_t* n, const int32_t* AnchorInfo, const float* dist,
                                        int32_t* order) TESSARMONT_NOEXCEPT;

/* CHECKERRORBIN: reads and checks a file of markers for binning.
 *   NumMarkers      in   int32        N, from BINFINDNUMMARKERS
 *   Names           out  int32[35*N]  character c of marker m at element (c-1)*N + m
 *   AnchorInfo      out  int32[N]     group of the marker, 0 for none
 *   MissingPercent  out  real32[N]    share of missing genotypes, percent */
TESSARMONT_EXPORT void CHECKERRORBIN(const int32_t* ModuleCode, const int32_t* NameLength,
                                     const char* FileName, const int32_t* NumMarkers, int32_t* Names,
                                     int32_t* AnchorInfo, float* MissingPercent,
                                     int32_t* Status) TESSARMONT_NOEXCEPT;

/* CHECKERRORMAP: reads a bi-parental population, tests each marker's segregation and estimates every pair.
 *   NumMarkers       in   int32        N, from MAPFINDNUMMARKERS
 *   PopulationType, MappingFunction, MarkerSpaceType, PopulationSize  out int32, as read
 *   Names            out  int32[35*N]  character c of marker m at element (c-1)*N + m
 *   AnchorInfo       out  int32[N]     group of the marker, 0 for none
 *   CountA .. CountX out  int32[N]     individuals per genotype, dominance codes folded
 *   MarkerCategory   out  int32[N]     1 co-dominant, 12 dominant, 10 recessive
 *   SegregationChi, SegregationP  out real32[N]  chi-square test against the population's ratio
 *   PairRec          out  real32[P]    recombination frequency, above 0.5 in repulsion
 *   PairLOD          out  real32[P]    LOD score, not below 0
 *   PairCrossovers   out  real32[P]    crossovers between the two markers over all individuals
 *   PairDistance     out  real32[P]    centimorgans by MappingFunction, 1000 when unlinked */
TESSARMONT_EXPORT void CHECKERRORMAP(const int32_t* NameLength, const char* FileName,
                                     const int32_t* NumMarkers, int32_t* Status, int32_t* PopulationType,
                                     int32_t* MappingFunction, int32_t* MarkerSpaceType,
                                     int32_t* PopulationSize, int32_t* Names, int32_t* AnchorInfo,
                                     int32_t* CountA, int32_t* CountH, int32_t* CountB, int32_t* CountX,
                                     int32_t* MarkerCategory, float* SegregationChi, float* SegregationP,
                                     float* PairRec, float* PairLOD, float* PairCrossovers,
                                     float* PairDistance) TESSARMONT_NOEXCEPT;

/* CHECKERRORCDM: reads a clonal F1 or a double cross, tests each marker's segregation and estimates every pair, each
 * parent for itself. Arguments 3 to 10 as in CHECKERRORMAP, N from CDMFINDNUMMARKERS.
 *   CountA .. CountX  out  int32[N]   individuals per genotype letter
 *   SegregationChi, SegregationP  out real32[N]  chi-square test; not a number without observations
 *   MarkerCategory    out  int32[N]   1 ABCD, 2 A=B, 3 C=D, 4 AB=CD, 5 A=D and B=C
 *   Rec...            out  real32[P]  frequency in the AB parent, in the CD parent (above 0.5 in repulsion), and pooled
 *   LOD...            out  real32[P]  LOD scores, not below 0
 *   Distance...       out  real32[P]  centimorgans by MappingFunction, 1000 when unlinked
 *   PhaseCode         out  int32[P]   1 coupling in both parents, 2 repulsion in CD, 3 in AB, 4 in both; kept where two
 *                                     markers have no individual in common
 * Which parent shows repulsion between two AB=CD markers of a clonal F1 can be a random draw: a second load in one
 * process may exchange the two. */
TESSARMONT_EXPORT void CHECKERRORCDM(
    const int32_t* NameLength, const char* FileName, const int32_t* NumMarkers, int32_t* Status,
    int32_t* PopulationType, int32_t* MappingFunction, int32_t* MarkerSpaceType, int32_t* PopulationSize,
    int32_t* Names, int32_t* AnchorInfo, int32_t* CountA, int32_t* CountB, int32_t* CountC, int32_t* CountD,
    int32_t* CountE, int32_t* CountF, int32_t* CountG, int32_t* CountH, int32_t* CountI, int32_t* CountJ,
    int32_t* CountK, int32_t* CountX, float* SegregationChi, float* SegregationP, int32_t* MarkerCategory,
    float* RecParent1, float* RecParent2, float* RecMean, float* LODParent1, float* LODParent2,
    float* LODMean, float* DistanceParent1, float* DistanceParent2, float* DistanceMean,
    int32_t* PhaseCode) TESSARMONT_NOEXCEPT;

/* CHECKERRORPLM: reads doubled haploids or inbred lines of four or eight parents, tests each marker's
 * segregation and estimates every pair. Arguments 3 to 10 as in CHECKERRORMAP, N from PLMFINDNUMMARKERS.
 *   CountA .. CountX  out  int32[N]   individuals per letter; of four parents, 0 for E to H
 *   SegregationChi, SegregationP  out real32[N]  chi-square test; not a number without observations
 *   MarkerCategory    out  int32[N]   the parents' alleles, a decimal digit a parent
 *   PairRec, PairLOD, PairDistance  out real32[P]  as in CHECKERRORMAP, PairRec 0 to 0.5 */
TESSARMONT_EXPORT void CHECKERRORPLM(const int32_t* NameLength, const char* FileName,
                                     const int32_t* NumMarkers, int32_t* Status, int32_t* PopulationType,
                                     int32_t* MappingFunction, int32_t* MarkerSpaceType,
                                     int32_t* PopulationSize, int32_t* Names, int32_t* AnchorInfo,
                                     int32_t* CountA, int32_t* CountB, int32_t* CountC, int32_t* CountD,
                                     int32_t* CountE, int32_t* CountF, int32_t* CountG, int32_t* CountH,
                                     int32_t* CountX, float* SegregationChi, float* SegregationP,
                                     int32_t* MarkerCategory, float* PairRec, float* PairLOD,
                                     float* PairDistance) TESSARMONT_NOEXCEPT;

/* TOOLTWOPOINTREC: maximum-likelihood estimate of one table of genotype pairs. No file, no log.
 *   Population  in   int32      1 to 20
 *   MarkerPair  in   int32      classes of the two markers: 11, 112, 110, 121, 1212, 1210, 101, 1012, 1010
 *   Table       in   real32[9]  cell 3*i + j, i the class of the first marker, j of the second (0 A, 1 H, 2 B)
 *   Rec, StdErr, LOD, PValue  out real32
 *   Haldane, Kosambi          out real32, centimorgans */
TESSARMONT_EXPORT void TOOLTWOPOINTREC(const int32_t* Population, const int32_t* MarkerPair,
                                       const float* Table, float* Rec, float* StdErr, float* LOD,
                                       float* PValue, float* Haldane, float* Kosambi) TESSARMONT_NOEXCEPT;

/* TOOLANOVA: analysis of a table of field plots, one row a plot: environment, genotype, block, then the traits, under a
 * title line. Writes seven text files beside the table, named by its path less the last four characters: .aov (analysis
 * of variance), .egv (means and predictions), .frq (frequencies), .qqp (quantiles), .coe (correlations), .pca and .pcp
 * (biplots). -9999 is a missing value.
 *   NameLength, FileName  in   the table; no more than 256 characters count
 *   NumRows               in   int32  rows of plots, without the title
 *   NumColumns            in   int32  columns, the three of the names included
 *   NumClasses            in   int32  classes of the frequency tables, at least 3
 *   Status                out  int32  0, or 100 when the table cannot be read: see ANOVA.log; no file is written then
 * A trait of a single value, an environment with a single plot of a trait, and a trait with error degrees of freedom in
 * one environment only, end the process with one line on standard error. */
TESSARMONT_EXPORT void TOOLANOVA(const int32_t* NameLength, const char* FileName, const int32_t* NumRows,
                                 const int32_t* NumColumns, const int32_t* NumClasses,
                                 int32_t* Status) TESSARMONT_NOEXCEPT;

/* MAPNNTWOOPT: orders the markers of one linkage group along a path.
 *   n      in   int32      number of markers, at least 1
 *   dist   in   real32[P]  pair distances, not negative, P = n(n-1)/2
 *   order  out  int32[n]   the path, a permutation of 1..n; its content on entry is not read
 * Opens no file, writes no log, has no Status. */
TESSARMONT_EXPORT void MAPNNTWOOPT(const int32_t* n, const float* dist, int32_t* order) TESSARMONT_NOEXCEPT;

/* MAPBYANCHORORDER: fits markers into a trusted frame by greedy insertion.
 *   n      in      int32      number of markers
 *   dist   in      real32[P]  pair distances
 *   order  in-out  int32[n]   on entry 1, 2, ..., k for the anchors, then 0; on return the order of all n */
TESSARMONT_EXPORT void MAPBYANCHORORDER(const int32_t* n, const float* dist,
                                        int32_t* order) TESSARMONT_NOEXCEPT;

/* MAPOUTPUT: writes STEM.bip, STEM.met and STEM.sdl, the project files of the mapping engines, for a new map.
 *   NameLength, FileName   in  the MAP project file
 *   StemLength, Stem       in  path of the new files without extension
 *   NumMarkers             in  int32        places on the new map
 *   NumChromosomes         in  int32        C
 *   ChromosomeName         in  bytes[19*C]  blank-padded fields
 *   ChromosomeMarkers      in  int32[C]     places per chromosome
 *   Order                  in  int32[NumMarkers]   running number in the file of the marker at each place
 *   Position               in  real32[NumMarkers]  position or interval of each place
 * Writes no log and has no Status; what the reader has to say goes to the default file of unit 100. */
TESSARMONT_EXPORT void MAPOUTPUT(const int32_t* NameLength, const char* FileName, const int32_t* StemLength,
                                 const char* Stem, const int32_t* NumMarkers, const int32_t* NumChromosomes,
                                 const char* ChromosomeName, const int32_t* ChromosomeMarkers,
                                 const int32_t* Order, const float* Position) TESSARMONT_NOEXCEPT;

/* CDMOUTPUT: writes the results of a clonal F1 or double cross for a finished map: STEM.hap (haplotypes of the
 * parents), STEM.cdq (project file of the mapping engine), STEM.sum, .sumf, .summ (summaries of the whole map,
 * of parent AB and of parent CD) and, family by family, the pair tables STEM.rec, .lod, .dis with their "f"
 * and "m".
 *   WriteRec, WriteLOD, WriteDistance  in  int32  1 writes the three tables of the family
 *   NameLength, FileName   in  the CDM project file that the map was built from
 *   StemLength, Stem       in  path of the new files without extension
 *   NumMarkers             in  int32        places on the map
 *   NumChromosomes         in  int32        C
 *   ChromosomeName         in  bytes[19*C]  blank-padded fields
 *   ChromosomeMarkers      in  int32[C]     places per group
 *   Order                  in  int32[NumMarkers]   running number in the file of the marker at each place
 *   Position               in  real32[NumMarkers]  centimorgans on the whole map
 *   FileMarkers            in  int32        N, markers of the file
 *   Deleted                in  int32[N - NumMarkers]  running numbers of the markers that are not on the map
 *   RecAB, RecCD, RecBoth, LODAB .. LODBoth, DistanceAB .. DistanceBoth  in  real32[P]
 *   PhaseCode              in  int32[P]     1 and 2 coupling in AB, 1 and 3 in CD; outside 1 to 4 unknown
 * Pair arrays run over the file's markers. No log, no Status: what cannot be read of the file stays blank. */
TESSARMONT_EXPORT void CDMOUTPUT(const int32_t* WriteRec, const int32_t* WriteLOD,
                                 const int32_t* WriteDistance, const int32_t* NameLength,
                                 const char* FileName, const int32_t* StemLength, const char* Stem,
                                 const int32_t* NumMarkers, const int32_t* NumChromosomes,
                                 const char* ChromosomeName, const int32_t* ChromosomeMarkers,
                                 const int32_t* Order, const float* Position, const int32_t* FileMarkers,
                                 const int32_t* Deleted, const float* RecAB, const float* RecCD,
                                 const float* RecBoth, const float* LODAB, const float* LODCD,
                                 const float* LODBoth, const float* DistanceAB, const float* DistanceCD,
                                 const float* DistanceBoth, const int32_t* PhaseCode) TESSARMONT_NOEXCEPT;

/* PLMOUTPUT: writes the results of a four- or eight-parent population for a finished map: STEM.plq (project
 * file of the mapping engine), STEM.sum (summary) and, where asked for, the pair tables STEM.rec, .lod, .dis.
 *   WriteRec, WriteLOD, WriteDistance  in  int32  1 writes the table
 *   NameLength, FileName   in  the PLM project file that the map was built from
 *   StemLength .. Deleted  in  as in CDMOUTPUT
 *   Rec, LOD, Distance     in  real32[P]
 * Pair arrays run over the file's markers. No log, no Status: what cannot be read of the file stays blank. */
TESSARMONT_EXPORT void PLMOUTPUT(const int32_t* WriteRec, const int32_t* WriteLOD,
                                 const int32_t* WriteDistance, const int32_t* NameLength,
                                 const char* FileName, const int32_t* StemLength, const char* Stem,
                                 const int32_t* NumMarkers, const int32_t* NumChromosomes,
                                 const char* ChromosomeName, const int32_t* ChromosomeMarkers,
                                 const int32_t* Order, const float* Position, const int32_t* FileMarkers,
                                 const int32_t* Deleted, const float* Rec, const float* LOD,
                                 const float* Distance) TESSARMONT_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
