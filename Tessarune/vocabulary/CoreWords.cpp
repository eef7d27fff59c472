// Made by scripts/core-words. Derived from WordNet 3.0, Copyright 2006 by Princeton University, all
// rights reserved; docs/third-party.md has its licence.

#include "Tessarune/vocabulary/CoreWords.h"

#include <sstream>

namespace tessarune {

namespace {

// clang-format off
constexpr const char* coreWordList = R"(
be have say not make man see do know come give use get take one find more seem only time go think
tell become then feel two now other so begin look such show work year first ask even leave want
also way face try new place hold just most form hear day many still keep need youth thing much
stand start little head provide play very state own mean good here run too great include move
people back eye write long all turn put change call appear follow hand help life study never open
part same again live bring expect small meet reach three believe consider let old end present
increase world receive lead last high number figure area continue result child serve however some
pay remain right report walk lie problem develop line add boy like return point fight grow no
always cause happen close watch force home light question there water foot indicate wait sit
remember pass require house side set speak almost lose determine voice stop friend hope field read
experience mind plan body night case soldier enough talk moment well certain name second sound
carry possible produce idea program girl often learn offer important understand better cover
interest die far drive information once school fire word answer send contain note surface regiment
type allow early four thus effect fall later woman down enter build large nothing act door action
create several cost spend value development family obtain complete decide fact general wish
different kind next describe raise reduce big death love room away church ever material rise sense
position support establish less stay country explain level fear amount job perhaps suggest best
dark draw whole apply concern drop record rate wife officer power control design direct hit occur
rather city demand individual out range represent seek win attempt cell god local reason spirit
wear clear hour stress young arm involve wonder accept approach difference prove view express
ground probably system today plant public air center choose claim feed quite join kill order share
suddenly fail government smile already five history list month recognize tree week age purpose war
company exist low measure break business buy horse maintain pressure rest assume century really
throw base care feeling mother picture prevent remove thought course land permit achieve deal
visit fill method sometimes trial true effort evidence hard listen morning sure wall gun matter
minute section shoot together law past period road sell up usually blue cut experiment further
process realize stare earth fellow office ride society catch charge half mass social total
activity agree enjoy human money temperature white alone announce available condition dead enemy
forget major mention street third strong subject wave attend real step observe strike teach
therefore battle conduct discover full function product single trouble various file red sing
community few game leg test bear discuss heart prepare situation space finally six stage supply
treat ago distance father national necessary operate sleep suppose table window able feature issue
laugh push reflect smoke student another forward shake about meaning save ten top touch town wage
attitude compare eat improve left member normal religious short slowly admit attention direction
doctor imagine influence average check data nature object patient pull quality reply rifle
separate sign deny march mark near notice simple size swing art easy hang lack price rule car
declare letter limit literature manner merely modern particular pattern remark tall black color
common contribute desire destroy finish paper regard region religion scene success theory blood
dream each economic free future industry likely shape training attack fit gain performance source
spread statement term audience basic command degree drink expression extend mouth movement ready
score shoulder special animal before election event every fine handle husband refuse sample sort
corner cry fly guess opportunity similar south suffer tend wide worry anode basis encourage
especially estimate film glance indeed miss tone avoid cross deep example item late music perform
simply words book difficult exercise growth insist percent refer repeat affect army around piece
story aid bad chance firm gray party political shout strange technique train address front hot
means particularly press promise reveal settle strength trade floor kid policy property select
shelter soon tax cold flow hair hate heavy practice spring store treatment court education pretty
replace role roll summer sun vary vote any board dust eliminate employ employee farm instead
language lip maybe pain possibility travel bed effective final inch private procedure production
recommend ship speed certainly comrade finger knee latter lift organization payment reaction river
somewhat above arise benefit building character collect comment demonstrate directly following
importance mile nod outside pound publish recall season shift shot threaten blow daily emerge
identify military nearly research song stem struggle text afternoon analysis apparently arrive
beat dance dictionary discussion existence larger loud measurement memory million particle poor
propose series site spot stretch unit urge argue bank dominant image immediately introduce murder
operation team volume active block catholic circumstance contact ear emotion escape generally
lower manager over pause progress service son wrong actually aim brush clearly contrast count
deliver doubt dress equal inform lieutenant match nation on recent sight skill sky vocational ball
crowd detail difficulty element entire equipment federal honor hundred hurry length maximum model
paint proceed project release requirement sale search solid structure transfer advance assure burn
christian column completely derive distribution energy happy impossible objective phase protestant
yard adopt argument award behavior bend characteristic clean coffee confront cool edge empty
factor grant greater hall labor lay marry newspaper personal purchase radiation serious straight
title west additional allotment appropriate assign captain carefully college completion display
encounter engage entirely fig former income knowledge loss muscle natural north possess roar
sentence style thin artist aspect author balance camp clothes cloud define dog earlier enable
favor fool heat highly inside liberal noise obviously physical plane protect schedule specific
square surprise wild arc brother conclude kitchen presently rain respect sharp smell tradition
understanding woods yet accomplish beginning bother chapter circle class double dry gather grass
intend neighborhood onset proper relationship successful teacher tooth victory warm wash weight
atmosphere attract brown burst depth essential illustrate intensity mission news oppose portion
presence preserve previous respond sea slide slow southern standard stock thick tissue writer
acquire arrange aware climb combine corporation device disappear flower hurt ignore lean manage
pair quickly rapidly soil stream succeed suspect sweep technical trust achievement adjust branch
communism defend divide exactly flash frequently glass hardly hotel judgment meeting mount occupy
oxygen pace prefer professional reality rear recently rush tie toss yellow along bond box
concentration conclusion content couple decision district evening examine extent fix forest gas
hide machine marriage official operator police promote protest quick relate relief ring soft
thousand throat afford bar belief chair concept contract eight exchange facility flag flee green
moreover regular reject sponsor submit variation wind witness worker associate bill communication
culture curse emphasize explanation fast female fourth liquid locate may ordinary principle race
rank relative relatively remind roof seven slip tear village western will actual brain bullet
chest complex compute construct county current curve devote distant failure foreign goal guide
independent judge known men non observation original page parent perceive population primary quiet
rage scream silence solve taste tattered variety yell abandon approve broad busy capacity coat
companion component congregation construction crawl date defeat defense dollar drag earn easily
faith guard guy heavily hill hire jump lock medical neck nose obvious off park peer principal
reference retain secure serum shadow snow solution stone though tube union university absence
afraid agent ahead below bitter bright career cast colonel conceive danger exceed fashion fence
gaze given in instant interpret main provision response retire round sink smaller sudden survive
task trip truth accompany affair apartment apparent appeal authorize battery beam cease chlorine
connection considerable constitute crash credit extreme fully fund grab imply invite minimum
mistake moral naturally occurrence opinion pale percentage planning probability reading request
review row safe science sigh significant species tale undertake upper assert assistance blind
breath commission cook correct damn drug expose fighting fresh furnish hat kick limited load mad
marketing message moon otherwise overcome president rock seat stain strain strip swear telephone
usual vision weapon apart as authority bird blame bottle capable challenge consideration dinner
director discharge domestic error expense gesture greatest hero hole illusion incident increased
institution key lady leap lung market notion occasionally petitioner phenomenon popular pour
predict previously pursue quote reader reasonable resume scale significance sin somewhere soul
speech steal suffering sufficient thrust vast wheel worth account alter anxiety application
assemble assumption attach central citizen club commit communist complain concerned darkness
deserve exhibit farmer food fraction friendly imagination install lot nice organize participate
persuade plot politics positive render rich satisfy services steps stick substitute thyroid
tremendous twist wound yield ability appreciate arrangement arrest band belong calm commercial
convert department detective diameter differ emotional essentially explode funny historical
instrument investigate justify link maturity network nevertheless opposite primarily reserve
secretary silent sketch stomach trace typical veteran waste weakness wet whisper wire agency
appearance assist beautiful bounce campaign compose constant crack curious debate description
drill duty erect exclude extension fat finance fluid folklore frame freedom gram industrial
interesting international involved launch literary management narrow painting personnel photograph
pool possibly practically precisely proclaim protection shoe station thermal tomorrow transform
troops vague valley visual warn wing approximately bit chicken chief compel confirm detailed
disease emphasis exception filled flight growing guest halt humor inner interested mere metal
middle motion movie multiply nine occasion peace pocket pond post radio react recommendation
register related relax resist resolve self sheet slightly stride sweet traditional unusual
wavelength welcome winter yesterday absorb academic accord advise agreement await binomial bound
brilliant candidate cattle choice competition concrete congress consequence cup customer damage
decade detergent dirt disclose distinct employment entertain evident familiar fifty flat forgive
frequency grip hence hesitate hospital insure kiss master milk musical mutter passage pitch please
pleasure relation rural secret seize shine shooting smooth soviet strengthen suit tonight
translate twice unable vacation wagon years acknowledge anger arouse blanket breathe calculate
closed comparison compete composer concentrate dare desk detect distinguish distribute division
downtown elect enforce evil existing expand fair fixed gone grade grin host induce integration
interview investigation jerk joy largely living minimal owner pile player resemble scientific
shear signal softly staff stir suggestion sympathetic threat uniform unity weigh wood advantage
analyze anti anticipate association background baseball bow closely coach condemn conjugate
consult critical dangerous daughter despair distinction economy entitle expenditure expert fairly
flux focus gradually grasp greatly hen holder huge ice impose impress independence jury justice
leader majority mud neighbor novel occasional papa pick potential powerful practical pray protein
pure rebel recreation rough security sequence session shade snake snap somehow stuff substantial
sufficiently superior surround ultimate undergo useful valuable while willing accuse adequate
annual apparatus attain barn bedroom behave brief camera capital careful cheek cite combat
confidence conviction corpse decline discovery drama eager environment financial garden gold
govern grim ideal identity immediate initial instance interrupt label leadership loan negative
northern organic pa parallel planet powder pretend prior prominent properly quantity resource shut
skin slight steel stumble substance suburban supplement swallow swell tendency tool trail tsunami
unique unknown virtually warning writing admire alternative appoint article artistic bat bench
bind borrow chain christ coast combination complement conflict confusion consciousness contemplate
continually contribution copy cow cure decrease definition delay democratic devil dominate dull
efficiency establishment extensive famous float flood formation generation health identical
imitation impression iron king legal needed neglect nest overall pack path perfect philosophy
plenty porch preparation queen rapid ratio representation responsibility satisfactory scan
seriously sex similarly spare split status survey sympathy tip truck truly twelve universal values
velocity weak weather whip withdraw wounded alert arrow bee bet category chemical clutch collapse
comedy concede connect continuous conversation cooperate cop crime cultural depart doctrine east
egg elaborate eventually excitement exert explore finding fist flesh fog gay glow greet historian
identification injury inspire intense knock leaf lick located manufacturer meal mine mood neither
normally observer oxidation persist phone plunge profound qualify recognition reduction reflection
relieve representative resolution restrict reverse rub salesman sensitive shell shock
simultaneously sister specialist spectrum squeeze stimulate symbol through tight tongue tough
tremble trend twenty weep widely worse worship atom attribute briefly brigade capture celebrate
comfort comfortable conscience conscious considerably contemporary convenient creature crew
curiosity deeply denote dislike dismiss entry equivalent everywhere experimental fasten fish
formula fun funds furthermore gate generate giant graduate healthy hearing height horror insert
interval invent laboratory lost male membership motive nuclear opening owe partly plead praise
precede professor pursuant quack readily recording root sacrifice safety sail scratch sewage
sharply sir slave stagger stall star strive sum tap target tension thirty tiny wander whisky
administer advice angry awake awful based basement beauty beer beg behind being bloom bottom
broken bury cat clarity coincide conception context conventional coordinate correspond crouch
demonstration developed dignity din dozen dramatic drift entrance evaluate extremely factory
fifteen filter firmly forever formal fundamental glue hatred honest hut impact improvement
instruct instruction journey liquor longer loose machinery marked mate modify mountain murmur
musician mysterious mystery necessity numerous older outcome outline pitcher plug prevail
prevention proof proposal quietly radical regional regret residential respectively routine seed
shop shore sick sport stockholder strongly swiftly talent tangent theology tumor upstairs utilize
violence wipe abroad absolute alive antibody automatically awaken baby bag bid bite cap cent
characterize civilization cluster collage commence committee communicate commute competitive
contend convey corresponding creep criminal crisis damned delight density descend discourage disk
disturb driver duck earthquake editor enact enormous examination excellent excuse folk formulate
grave impulse inquire intellectual interior iodine isolate isolated jacket landscape lesson ma
magnitude mail married medium mixture nail negotiate oath odd pilot pistol plate precise primitive
print proportion rent repair restore saddle salt sexual shower smart someone steady straighten
suitable surely surge suspend sustain tent texture thank tumble utopia utopian vanish venture wise
abstract administrative advanced antenna anyway aside blaze brass brood bunk champion cheer chin
cigarette cling clock cloth conference conservative constantly creative deduct deduction desirable
dot drinking electric electrical endure equally essay exact exaggerate extra faint fan forbid
fulfill glory graph guarantee hasten horizon hunting implication impressive increasingly inning
instantly interpretation lend linguist luck lyric magazine meanwhile mental mess mixed necessitate
neutral nucleus oil opposition origin originate outlook partner patrol personality personally
philosopher phrase plain polish possession presumably pride producer proud psychologist rarely
recover recruit residence restrain rhythm risk screen selection sensation shame shirt sidewalk
silver slam spark specify spin squat string suburb sway sweat switch symbolize thunder toe uphold
visible wooden zero accommodate ace acre aircraft ancient approval august automobile avocado
barrel betray bridge cancer catcher ceremony chart chase clarify classification clinical
collection comprise confuse conversion convince core courage crazy delicate devise dirty disaster
drunk evidently exciting extraordinary fate feeding flame found freeze gift glare gradient harbor
haste helium hell honey innocent insight institute interaction intimate invention island jazz joke
lap laughter lawyer legend loom metropolitan minor moderate nearby objection obligation oblige
orange orbit painter patch peculiar perception perfectly prepared presentation priest quit
remarkable republican required rumor satisfaction scope sensitivity severe sheep slap slash slope
sorry span stairs stranger studio successfully surplus surprised swift television terrible
theological thereby thoroughly troop uneasy variable vehicle version wildly wink yes absent actor
administration affirm amateur ambiguous angle anxious anyhow aqueous assault assess bacterial bang
beach boast boat boot breakfast brow button classify compound cooperative creation definite
deliberately depict destruction dig dimension divorce drawing effectiveness electricity elsewhere
employer enlist era external extract fade fault fiber fiction fierce fifth firing fling foe
formulation forty frequent fruit garage gentle grounds habit heave helpful hidden horn illuminate
immortality inadequate increasing inherit initiate inspect intent interfere intermediate lamp lawn
lord mature merit mighty minimize missile mouse myth native net nineteenth obey operational opium
physiological pink poem poet pole portray pot prime profile projection prospect raw realism
relations reproduce rescue resent scramble sculpture settlement snatch sphere stamp storm striking
supper supposed symptom technology testify theme theorem tire traffic transition trap unite
universe utter vacuum vaguely valued vein viewpoint vigorous vivid wake warrant washing wonderful
worthy absolutely adapt addition adventure advertising afterward amazement analytic applicant
assurance automatic barely belt bible blink bold bone boss brand brave buffer bunch cafeteria
camping caution changing cherish choke clamor classic cleaning clergyman commander composition
confess confused consent convinced counterpart crimson criticize crush dawn dear deem denounce
desert designate desperate due dump ease effectively engineer enterprise enthusiasm evoke exclaim
expensive exploit exposure flourish foster furious gallop gasp gently glad grunt guidance haul
holiday homer howl indication indicator infantry intention internal lecture logical lunch maid
mechanical mechanism merge minister mirror mob mode morality mostly obscure openly papers
participation pat permanent pity politician pose preach probable productivity prompt quarrel
railroad regulation remote resistance respiratory retreat revive rider route scatter secede
sentiment shrug skeletal smash specifically spectator spur stiffen straw stroke subtle suspicion
swim teaching terminate times track trim trot tune upset vector vertex violate voyage wealth
weekend abstraction accelerate accident accurate advocate aesthetic allot altogether appreciation
artillery assignment authentic awareness bell bellow bleed bomb border broaden can canteen canvas
carve ceiling chaos commend comparable comprehend concentrated confine contest continued
continuity convict counter covered crowded cycle dash defy dependent desperately diminish dish
doom doubtful echo eighth electron eleven embrace endeavor engagement engine enlarge equip
established excite exhibition fabric farming fold frown genuine gleam glimpse grace gross guilty
highway hours hurl injure insane intelligent intersection invariably investment knife lagoon layer
league legislation lighted lightly liver log lucky magnificent manifold medieval melody moving
murderer mythological nationalism nazi neat nervous ninth norm nowhere passing peak pen plainly
playing pleased poetry poke postpone prayer presume prisoner profession publicly pump punishment
purely quarter ray reasonably regardless reinforce repel respectable retired revolution rip sand
scheme seal sector severely shatter sixth slender slice speaker spit squad stable steeple strategy
structured stupid subsection surprising swollen tape teenager territory terror transport
transportation tray triumph twentieth unfortunately vase vessel victim volunteer watercolor weary
weekly widespread wit working yank accordingly acquisition adult aerator aerosol alarm aloud
ambition amend ammunition anticipation antigen anymore apprentice arms assistant badly besides
beyond biological blossom boil bolt boost bore brightness bristle builder buzz group location
person
)";
// clang-format on

} // namespace

std::vector<std::string> loadCoreWords() {
    std::istringstream list(coreWordList);
    std::vector<std::string> words;
    for (std::string word; list >> word;)
        words.push_back(word);
    return words;
}

} // namespace tessarune
